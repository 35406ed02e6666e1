#include "app/cli.h"
#include "app/vaultlocator.h"
#include "base/windowspath.h"
#include "common/errortexts.h"
#include "common/settingslight.h"
#include "host/hosterror.h"
#include "platform/filesystem.h"
#include "vault/vaultadd.h"
#include "vault/vaultstore.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>


namespace {

// NAME=VALUE with a non-empty name.
std::pair<QString, QString> splitAssignment(const QString &text)
{
    const qsizetype at = text.indexOf('=');
    if (at <= 0 || text.left(at).trimmed().isEmpty())
        throw CliError(QStringLiteral("'%1' is not NAME=VALUE").arg(text));
    return {text.left(at).trimmed(), text.mid(at + 1)};
}

QString variantText(const Variant &value)
{
    try {
        return value.toText();
    } catch (const HostError &) {
        return describeVariant(value);
    }
}

int runVaultInit(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption name(QStringLiteral("name"), QStringLiteral("The vault's name (default: the folder's)."),
                                  QStringLiteral("NAME"));
    const QCommandLineOption drive(QStringLiteral("drive"), QStringLiteral("Drive letter of the local view (default V)."),
                                   QStringLiteral("LETTER"));
    const QCommandLineOption dateStyle(QStringLiteral("date-style"), QStringLiteral("The vault's date style (default 0)."),
                                       QStringLiteral("N"));
    const QCommandLineOption server(QStringLiteral("server"),
                                    QStringLiteral("PostgreSQL database that holds the vault (libpq URL or key=value)."),
                                    QStringLiteral("URL"));
    parser.addOptions({name, drive, dateStyle, server});
    parser.addPositionalArgument(QStringLiteral("DIR"), QStringLiteral("Folder that becomes the vault."));
    if (!parseCommandLine(parser, context,
               QStringLiteral("vault init DIR [--name NAME] [--drive LETTER] [--date-style N] [--server URL]"),
               QStringLiteral("Creates a vault in DIR (created when missing); its database lives in DIR/.mctask,\n"
                              "or with --server in that PostgreSQL database, DIR being this machine's local view.")))
        return 0;
    if (parser.positionalArguments().size() != 1)
        throw CliError(QStringLiteral("vault init: expected one DIR (see --help)"));
    requirePath(parser.positionalArguments().first(), QStringLiteral("vault init"));
    const QString dir = QDir(parser.positionalArguments().first()).absolutePath();
    QString letter = parser.isSet(drive) ? parser.value(drive).trimmed() : QStringLiteral("V");
    if (!letter.endsWith(':'))
        letter += ':';
    const QChar driveLetter = letter.size() == 2 ? WindowsPath::driveLetter(letter) : QChar();
    if (driveLetter.isNull())
        throw CliError(QStringLiteral("vault init: '%1' is not a drive letter").arg(parser.value(drive)));
    std::uint32_t style = 0;
    if (parser.isSet(dateStyle)) {
        bool ok = false;
        style = parser.value(dateStyle).toUInt(&ok);
        if (!ok)
            throw CliError(QStringLiteral("vault init: '%1' is not a date style number").arg(parser.value(dateStyle)));
    }
    const QString vaultName = parser.isSet(name) ? parser.value(name).trimmed() : QFileInfo(dir).fileName();
    if (vaultName.isEmpty())
        throw CliError(QStringLiteral("vault init: the vault needs a name"));
    if (VaultStore::isVault(dir))
        throw CliError(QStringLiteral("vault init: %1 already holds a vault").arg(dir));
    if (FileSystem::instance().exists(dir) && !FileSystem::instance().isDirectory(dir))
        throw CliError(QStringLiteral("vault init: %1 is a file").arg(dir));

    try {
        VaultOpenOptions options;
        options.drive = driveLetter;
        const auto store = parser.isSet(server) ? VaultStore::createOnServer(parser.value(server), dir, vaultName, options)
                                                : VaultStore::create(dir, vaultName, options);
        store->setSetting(QStringLiteral("DateFmt"), QString::number(style));
        // The macros read the date style from the vault client's settings.
        if (!SettingsLight().setVaultDateStyle(vaultName, style))
            context.err << "mctask: warning: the date style could not be written to the settings\n";
        if (!mountVaultDrive(*store, true))
            context.err << "mctask: warning: drive " << driveLetter << ": could not be mounted\n";
        context.err.flush();
        context.out << "created vault '" << vaultName << "' in " << dir << " as " << store->paths().windowsRoot()
                    << '\n';
        return 0;
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
}

int runVaultAdd(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption to(QStringLiteral("to"), QStringLiteral("Vault folder to add to."), QStringLiteral("FOLDER"));
    const QCommandLineOption revision(QStringLiteral("revision"), QStringLiteral("Revision label of the new versions."),
                                      QStringLiteral("R"));
    const QCommandLineOption state(QStringLiteral("state"), QStringLiteral("Workflow state of the new versions."),
                                   QStringLiteral("NAME"));
    const QCommandLineOption card(QStringLiteral("card"), QStringLiteral("A card value of the new versions."),
                                  QStringLiteral("NAME=VALUE"));
    parser.addOptions({vaultOption(), jsonOption(), to, revision, state, card});
    parser.addPositionalArgument(QStringLiteral("SRC"), QStringLiteral("Files or folders (native or vault paths)."),
                                 QStringLiteral("SRC..."));
    if (!parseCommandLine(parser, context,
               QStringLiteral("vault add [--vault DIR] SRC... [--to FOLDER] [--revision R] [--state NAME] "
                              "[--card NAME=VALUE]... [--json]"),
               QStringLiteral("Adds files to the vault in one transaction and checks them in. A file already in the\n"
                              "vault gets a new version when its bytes differ. Files inside the vault's folder\n"
                              "stay where they are unless --to names another folder.")))
        return 0;
    if (parser.positionalArguments().isEmpty())
        throw CliError(QStringLiteral("vault add: name at least one SRC (see --help)"));
    std::vector<std::pair<QString, QString>> cards;
    for (const QString &assignment : parser.values(card))
        cards.push_back(splitAssignment(assignment));

    const auto store = openLocatedVault(parser.value(vaultOption()));
    std::optional<QString> folder;
    if (parser.isSet(to)) {
        // Absolute: a vault or native path; relative: a folder below the
        // vault root (not below the current folder).
        const QString value = parser.value(to);
        requirePath(value, QStringLiteral("vault add: --to"));
        const bool absolute = value.startsWith('/') || !WindowsPath::driveLetter(value).isNull();
        QString relative;
        if (absolute)
            relative = vaultPathArgument(*store, value);
        else if (!store->paths().toRelative(store->paths().windowsRoot() + '\\' + value, relative))
            throw CliError(QStringLiteral("vault add: '%1' is not a vault folder").arg(value));
        folder = relative;
    }
    VaultAdd add(*store);
    try {
        for (const QString &source : parser.positionalArguments()) {
            requirePath(source, QStringLiteral("vault add"));
            add.addSource(source, folder);
        }
    } catch (const VaultAddError &e) {
        throw CliError(QStringLiteral("vault add: ") + e.message());
    }
    for (const QString &file : add.skipped())
        context.err << "mctask: vault add: skipped " << file << ": not a regular file\n";
    context.err.flush();

    VaultAdd::Labels labels;
    if (parser.isSet(revision))
        labels.revision = parser.value(revision);
    if (parser.isSet(state))
        labels.state = parser.value(state);
    labels.cards = std::move(cards);
    std::vector<VaultAdd::Result> results;
    try {
        results = add.commit(labels);
    } catch (const VaultAddError &e) {
        throw CliError(QStringLiteral("vault add: ") + e.message());
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
    QJsonArray json;
    std::vector<QStringList> rows;
    for (const VaultAdd::Result &result : results) {
        const QString action = VaultAdd::actionText(result.action);
        rows.push_back({QString::number(result.id), result.path, QString::number(result.version), action});
        json.append(QJsonObject{{"id", result.id}, {"path", result.path}, {"version", result.version}, {"action", action}});
    }
    if (parser.isSet(jsonOption()))
        printJson(context.out, json);
    else
        printTable(context.out, {"ID", "PATH", "VERSION", "ACTION"}, rows);
    return 0;
}

int runVaultLs(CommandContext &context)
{
    QCommandLineParser parser;
    parser.addOptions({vaultOption(), jsonOption()});
    parser.addPositionalArgument(QStringLiteral("FOLDER"), QStringLiteral("Folder to list (default: the root)."),
                                 QStringLiteral("[FOLDER]"));
    if (!parseCommandLine(parser, context, QStringLiteral("vault ls [--vault DIR] [--json] [FOLDER]"),
               QStringLiteral("Lists the files in and below a vault folder.")))
        return 0;
    if (parser.positionalArguments().size() > 1)
        throw CliError(QStringLiteral("vault ls: at most one FOLDER (see --help)"));
    const auto store = openLocatedVault(parser.value(vaultOption()), VaultUse::Read);
    int folderId = VaultStore::RootFolderId;
    if (!parser.positionalArguments().isEmpty()) {
        const QString argument = parser.positionalArguments().first();
        const auto folder = store->folderByPath(vaultPathArgument(*store, argument));
        if (!folder)
            throw CliError(QStringLiteral("vault ls: no folder %1 in the vault").arg(argument));
        folderId = folder->id;
    }
    try {
        QJsonArray json;
        std::vector<QStringList> rows;
        for (const VaultFileRow &file : store->filesUnder(folderId)) {
            const QString path = store->paths().toWindows(file.path);
            rows.push_back({QString::number(file.id), QString::number(file.folderId), path,
                            QString::number(file.latestVersion), file.revision, file.state, file.lockedBy});
            json.append(QJsonObject{{"id", file.id},
                                    {"folder_id", file.folderId},
                                    {"path", path},
                                    {"version", file.latestVersion},
                                    {"revision", file.revision},
                                    {"state", file.state},
                                    {"checked_out", file.lock != VaultLock::None},
                                    {"checked_out_by", file.lockedBy}});
        }
        if (parser.isSet(jsonOption()))
            printJson(context.out, json);
        else
            printTable(context.out, {"ID", "FOLDER", "PATH", "VERSION", "REVISION", "STATE", "CHECKED OUT"}, rows);
        return 0;
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
}

VaultFileRow requireVaultFile(VaultStore &store, const QString &argument, const QString &command)
{
    const auto file = store.fileByPath(vaultPathArgument(store, argument));
    if (!file)
        throw CliError(QStringLiteral("%1: %2 is not a file of the vault").arg(command, argument));
    return *file;
}

int runVaultCard(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption conf(QStringLiteral("conf"), QStringLiteral("Configuration (default: the file's own)."),
                                  QStringLiteral("NAME"));
    parser.addOptions({vaultOption(), jsonOption(), conf});
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The vault file."));
    parser.addPositionalArgument(QStringLiteral("NAME"), QStringLiteral("Variables to read, or NAME=VALUE to set."),
                                 QStringLiteral("[NAME[=VALUE]]..."));
    if (!parseCommandLine(parser, context, QStringLiteral("vault card [--vault DIR] [--json] [--conf NAME] FILE [NAME[=VALUE]]..."),
               QStringLiteral("Reads or sets card variables of the file's latest version. Without NAME it shows\n"
                              "every value; NAME=VALUE sets a text value (defining the variable when new).")))
        return 0;
    QStringList args = parser.positionalArguments();
    if (args.isEmpty())
        throw CliError(QStringLiteral("vault card: name a FILE (see --help)"));
    const QString fileArgument = args.takeFirst();
    QStringList reads;
    std::vector<std::pair<QString, QString>> writes;
    for (const QString &arg : args) {
        if (arg.contains('='))
            writes.push_back(splitAssignment(arg));
        else if (arg.trimmed().isEmpty())
            throw CliError(QStringLiteral("vault card: empty variable name"));
        else
            reads.append(arg.trimmed());
    }
    const auto store = openLocatedVault(parser.value(vaultOption()), writes.empty() ? VaultUse::Read : VaultUse::Write);
    const VaultFileRow file = requireVaultFile(*store, fileArgument, QStringLiteral("vault card"));
    const QString configuration = parser.value(conf);
    try {
        if (!writes.empty()) {
            Transaction transaction(store->db());
            for (const auto &[name, value] : writes) {
                store->defineCardVariable(name);
                store->setCardValue(file.id, 0, name, configuration, Variant::fromBStr(value));
            }
            transaction.commit();
        }
        std::vector<std::pair<QString, std::optional<Variant>>> shown;
        if (reads.isEmpty() && writes.empty()) {
            for (const VaultCardValue &v : store->cardValues(file.id, 0))
                if (v.configuration == configuration)
                    shown.emplace_back(v.variable, v.value);
        } else {
            for (const auto &[name, value] : writes)
                reads.append(name);
            for (const QString &name : reads)
                shown.emplace_back(name, store->cardValue(file.id, 0, name, configuration));
        }
        QJsonObject json;
        std::vector<QStringList> rows;
        for (const auto &[name, value] : shown) {
            json.insert(name, value ? QJsonValue(variantText(*value)) : QJsonValue());
            rows.push_back({name, value ? variantText(*value) : QString()});
        }
        if (parser.isSet(jsonOption()))
            printJson(context.out, json);
        else
            printTable(context.out, {"NAME", "VALUE"}, rows);
        return 0;
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
}

int runVaultRef(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption conf(QStringLiteral("conf"), QStringLiteral("Configuration of CHILD that is used."),
                                  QStringLiteral("NAME"));
    parser.addOptions({vaultOption(), conf});
    parser.addPositionalArgument(QStringLiteral("PARENT"), QStringLiteral("The referencing vault file."));
    parser.addPositionalArgument(QStringLiteral("CHILD"), QStringLiteral("The referenced vault file."));
    if (!parseCommandLine(parser, context, QStringLiteral("vault ref [--vault DIR] PARENT CHILD [--conf NAME]"),
               QStringLiteral("Makes the latest version of PARENT reference the latest version of CHILD.")))
        return 0;
    if (parser.positionalArguments().size() != 2)
        throw CliError(QStringLiteral("vault ref: expected PARENT and CHILD (see --help)"));
    const auto store = openLocatedVault(parser.value(vaultOption()));
    const VaultFileRow parent = requireVaultFile(*store, parser.positionalArguments()[0], QStringLiteral("vault ref"));
    const VaultFileRow child = requireVaultFile(*store, parser.positionalArguments()[1], QStringLiteral("vault ref"));
    if (parent.id == child.id)
        throw CliError(QStringLiteral("vault ref: a file cannot reference itself"));
    try {
        store->addReference(parent.id, child.id, parser.value(conf));
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
    context.out << store->paths().toWindows(parent.path) << " v" << parent.latestVersion << " -> "
                << store->paths().toWindows(child.path) << " v" << child.latestVersion;
    if (!parser.value(conf).isEmpty())
        context.out << " (" << parser.value(conf) << ')';
    context.out << '\n';
    return 0;
}

} // namespace

int runVaultInitCommand(CommandContext &context) { return runVaultInit(context); }
int runVaultAddCommand(CommandContext &context) { return runVaultAdd(context); }
int runVaultAttach(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption drive(QStringLiteral("drive"),
                                   QStringLiteral("Drive letter of this local view (default: the vault's)."),
                                   QStringLiteral("LETTER"));
    parser.addOptions({drive});
    parser.addPositionalArgument(QStringLiteral("URL"), QStringLiteral("The vault's PostgreSQL database."));
    parser.addPositionalArgument(QStringLiteral("DIR"), QStringLiteral("Folder that becomes this machine's local view."));
    if (!parseCommandLine(parser, context, QStringLiteral("vault attach URL DIR [--drive LETTER]"),
               QStringLiteral("Makes DIR this machine's local view of the vault in the PostgreSQL database at URL.\n"
                              "Files come into it when a command or a run needs them, or with vault get.")))
        return 0;
    if (parser.positionalArguments().size() != 2)
        throw CliError(QStringLiteral("vault attach: expected URL and DIR (see --help)"));
    requirePath(parser.positionalArguments()[1], QStringLiteral("vault attach"));
    const QString dir = QDir(parser.positionalArguments()[1]).absolutePath();
    std::optional<QChar> letter;
    if (parser.isSet(drive)) {
        QString text = parser.value(drive).trimmed();
        if (!text.endsWith(':'))
            text += ':';
        letter = text.size() == 2 ? WindowsPath::driveLetter(text) : QChar();
        if (letter->isNull())
            throw CliError(QStringLiteral("vault attach: '%1' is not a drive letter").arg(parser.value(drive)));
    }
    if (VaultStore::isVault(dir))
        throw CliError(QStringLiteral("vault attach: %1 already holds a vault").arg(dir));
    try {
        const auto store = VaultStore::attachToServer(parser.positionalArguments()[0], dir, {}, letter);
        if (!mountVaultDrive(*store, true))
            context.err << "mctask: warning: drive " << store->paths().windowsRoot() << " could not be mounted\n";
        context.err.flush();
        context.out << "attached vault '" << store->name() << "' in " << dir << " as " << store->paths().windowsRoot()
                    << '\n';
        return 0;
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
}

int runVaultGet(CommandContext &context)
{
    QCommandLineParser parser;
    parser.addOptions({vaultOption()});
    parser.addPositionalArgument(QStringLiteral("PATH"), QStringLiteral("Files or folders (default: the whole vault)."),
                                 QStringLiteral("[FILE|FOLDER]..."));
    if (!parseCommandLine(parser, context, QStringLiteral("vault get [--vault DIR] [FILE|FOLDER]..."),
               QStringLiteral("Brings the local copies of files up to their latest versions; a copy you have\n"
                              "checked out stays as it is.")))
        return 0;
    const auto store = openLocatedVault(parser.value(vaultOption()), VaultUse::Read);
    QStringList arguments = parser.positionalArguments();
    if (arguments.isEmpty())
        arguments.append(store->paths().windowsRoot() + '\\');
    std::vector<int> files;
    for (const QString &argument : arguments) {
        const QString relative = vaultPathArgument(*store, argument);
        if (const auto file = store->fileByPath(relative)) {
            files.push_back(file->id);
        } else if (const auto folder = store->folderByPath(relative)) {
            for (const VaultFileRow &row : store->filesUnder(folder->id))
                files.push_back(row.id);
        } else {
            throw CliError(QStringLiteral("vault get: no file or folder %1 in the vault").arg(argument));
        }
    }
    try {
        int fetched = 0;
        for (const int id : files)
            fetched += store->fetch(id) ? 1 : 0;
        context.out << "fetched " << fetched << " of " << files.size() << " files\n";
        return 0;
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
}

int runVaultLsCommand(CommandContext &context) { return runVaultLs(context); }
int runVaultAttachCommand(CommandContext &context) { return runVaultAttach(context); }
int runVaultGetCommand(CommandContext &context) { return runVaultGet(context); }
int runVaultCardCommand(CommandContext &context) { return runVaultCard(context); }
int runVaultRefCommand(CommandContext &context) { return runVaultRef(context); }
