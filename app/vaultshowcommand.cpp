#include "app/cli.h"
#include "app/vaultlocator.h"
#include "common/errortexts.h"
#include "host/hosterror.h"
#include "vault/vaultstore.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonObject>

// mctask vault show: what a run did to a file, in one view.

namespace {

QString cardText(const Variant &value)
{
    try {
        return value.toText();
    } catch (const HostError &) {
        return QStringLiteral("(%1)").arg(static_cast<int>(value.type()));
    }
}

QString filePath(VaultStore &store, int fileId)
{
    const auto file = store.fileById(fileId);
    return file ? store.paths().toWindows(file->path) : QStringLiteral("#%1").arg(fileId);
}

int runVaultShow(CommandContext &context)
{
    QCommandLineParser parser;
    parser.addOptions({vaultOption(), jsonOption()});
    parser.addPositionalArgument(QStringLiteral("FILE"), QStringLiteral("The vault file."));
    if (!parseCommandLine(parser, context, QStringLiteral("vault show [--vault DIR] [--json] FILE"),
                          QStringLiteral("Shows a file's versions (number, date, check-in comment), the card variables\n"
                                         "of its latest version, the files it references and the files that\n"
                                         "reference it.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() != 1)
        throw CliError(QStringLiteral("vault show: name one FILE (see --help)"));
    const auto store = openLocatedVault(parser.value(vaultOption()), VaultUse::Read);
    const auto file = store->fileByPath(vaultPathArgument(*store, args.first()));
    if (!file)
        throw CliError(QStringLiteral("vault show: %1 is not a file of the vault").arg(args.first()));

    try {
        const QString path = store->paths().toWindows(file->path);
        const std::vector<VaultVersionRow> versions = store->versions(file->id);
        const std::vector<VaultCardValue> card = store->cardValues(file->id, 0);
        const std::vector<VaultReferenceRow> uses = store->references(file->id, 0);
        const std::vector<VaultReferenceRow> usedBy = store->referencedBy(file->id);

        if (parser.isSet(jsonOption())) {
            QJsonArray jsonVersions;
            for (const VaultVersionRow &v : versions)
                jsonVersions.append(QJsonObject{{QStringLiteral("version"), v.version},
                                                {QStringLiteral("date"), v.created},
                                                {QStringLiteral("comment"), v.comment},
                                                {QStringLiteral("user"), v.user},
                                                {QStringLiteral("revision"), v.revision},
                                                {QStringLiteral("state"), v.state}});
            QJsonArray jsonCard;
            for (const VaultCardValue &value : card)
                jsonCard.append(QJsonObject{{QStringLiteral("variable"), value.variable},
                                            {QStringLiteral("configuration"), value.configuration},
                                            {QStringLiteral("value"), cardText(value.value)}});
            QJsonArray jsonUses;
            for (const VaultReferenceRow &r : uses)
                jsonUses.append(QJsonObject{{QStringLiteral("path"), filePath(*store, r.childId)},
                                            {QStringLiteral("version"), r.childVersion},
                                            {QStringLiteral("configuration"), r.configuration}});
            QJsonArray jsonUsedBy;
            for (const VaultReferenceRow &r : usedBy)
                jsonUsedBy.append(QJsonObject{{QStringLiteral("path"), filePath(*store, r.parentId)},
                                              {QStringLiteral("version"), r.parentVersion},
                                              {QStringLiteral("configuration"), r.configuration}});
            printJson(context.out, QJsonObject{{QStringLiteral("path"), path},
                                               {QStringLiteral("id"), file->id},
                                               {QStringLiteral("checkedOutBy"), file->lockedBy},
                                               {QStringLiteral("versions"), jsonVersions},
                                               {QStringLiteral("card"), jsonCard},
                                               {QStringLiteral("references"), jsonUses},
                                               {QStringLiteral("referencedBy"), jsonUsedBy}});
            return 0;
        }

        context.out << path << " (id " << file->id << ")";
        if (!file->lockedBy.isEmpty())
            context.out << ", checked out by " << file->lockedBy;
        context.out << "\n\nVersions\n";
        std::vector<QStringList> rows;
        for (const VaultVersionRow &v : versions)
            rows.push_back({QString::number(v.version), v.created, v.comment, v.revision, v.state});
        printTable(context.out, {"VERSION", "DATE", "COMMENT", "REVISION", "STATE"}, rows);
        context.out << "\nCard\n";
        rows.clear();
        for (const VaultCardValue &value : card)
            rows.push_back({value.variable, value.configuration, cardText(value.value)});
        printTable(context.out, {"VARIABLE", "CONFIGURATION", "VALUE"}, rows);
        context.out << "\nReferences\n";
        rows.clear();
        for (const VaultReferenceRow &r : uses)
            rows.push_back({"uses", filePath(*store, r.childId), QString::number(r.childVersion), r.configuration});
        for (const VaultReferenceRow &r : usedBy)
            rows.push_back({"used by", filePath(*store, r.parentId), QString::number(r.parentVersion), r.configuration});
        printTable(context.out, {"DIRECTION", "FILE", "VERSION", "CONFIGURATION"}, rows);
        return 0;
    } catch (const HostError &e) {
        context.err << "mctask: vault show: " << errorName(e.code()) << ": " << errorText(e.code()) << '\n';
        return 1;
    }
}

} // namespace

int runVaultShowCommand(CommandContext &context) { return runVaultShow(context); }
