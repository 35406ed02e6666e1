// mctask registry get|set|delete: an administrator's view of the registry store.

#include "app/cli.h"

#include "platform/registrystore.h"

#include <QCommandLineParser>

namespace {

struct KeyPath {
    RegistryRoot root;
    QString path;
    RegistryView view;
};

const QCommandLineOption &viewOption()
{
    static const QCommandLineOption option(QStringLiteral("view"),
                                           QStringLiteral("Registry view of HKLM: 32 or 64 (default: 64)."),
                                           QStringLiteral("BITS"));
    return option;
}

KeyPath parseKey(const QString &command, const QString &text, const QCommandLineParser &parser)
{
    const qsizetype slash = text.indexOf(QLatin1Char('\\'));
    const QString rootName = slash < 0 ? text : text.left(slash);
    const std::optional<RegistryRoot> root = registryRootFromName(rootName);
    if (!root)
        throw CliError(QStringLiteral("registry %1: KEY must begin with HKLM\\ or HKCU\\, not '%2'").arg(command, text));
    KeyPath key{*root, slash < 0 ? QString() : text.mid(slash + 1), RegistryView::Native};
    while (key.path.endsWith(QLatin1Char('\\')))
        key.path.chop(1);
    const QString view = parser.value(viewOption());
    if (view == QLatin1String("32"))
        key.view = RegistryView::View32;
    else if (!view.isEmpty() && view != QLatin1String("64"))
        throw CliError(QStringLiteral("registry %1: --view takes 32 or 64, not '%2'").arg(command, view));
    return key;
}

QString keyName(const KeyPath &key)
{
    const QString root = key.root == RegistryRoot::LocalMachine ? QStringLiteral("HKLM")
                         : key.root == RegistryRoot::CurrentUser ? QStringLiteral("HKCU")
                                                                 : QStringLiteral("HKCR");
    return key.path.isEmpty() ? root : root + QLatin1Char('\\') + key.path;
}

// "(Default)" and "" both name the default value.
QString valueName(const QString &text)
{
    return text.compare(QLatin1String("(Default)"), Qt::CaseInsensitive) == 0 ? QString() : text;
}

QStringList valueRow(const QString &name, const RegistryValue &value)
{
    const QString shown = name.isEmpty() ? QStringLiteral("(Default)") : name;
    switch (value.type) {
    case RegistryValueType::Dword:
        return {shown, QStringLiteral("REG_DWORD"),
                QStringLiteral("0x%1 (%2)").arg(value.dword, 0, 16).arg(value.dword)};
    case RegistryValueType::ExpandString:
        return {shown, QStringLiteral("REG_EXPAND_SZ"), value.text};
    case RegistryValueType::String:
        break;
    }
    return {shown, QStringLiteral("REG_SZ"), value.text};
}

} // namespace

int runRegistryGetCommand(CommandContext &context)
{
    QCommandLineParser parser;
    parser.addOption(viewOption());
    if (!parseCommandLine(parser, context, QStringLiteral("registry get [--view 32|64] KEY [NAME]"),
                          QStringLiteral("Prints a value of KEY, or all its values and sub-keys. KEY begins with\n"
                                         "HKLM\\ or HKCU\\; NAME \"(Default)\" is the key's default value.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.isEmpty() || args.size() > 2)
        throw CliError(QStringLiteral("registry get: expected KEY [NAME] (see --help)"));
    const KeyPath key = parseKey(QStringLiteral("get"), args[0], parser);
    RegistryStore &store = RegistryStore::instance();
    if (!store.keyExists(key.root, key.view, key.path)) {
        context.err << "mctask: registry get: no key " << keyName(key) << '\n';
        return 1;
    }
    std::vector<QStringList> rows;
    if (args.size() == 2) {
        const QString name = valueName(args[1]);
        const std::optional<RegistryValue> value = store.readValue(key.root, key.view, key.path, name);
        if (!value) {
            context.err << "mctask: registry get: no value '" << args[1] << "' in " << keyName(key) << '\n';
            return 1;
        }
        rows.push_back(valueRow(name, *value));
    } else {
        for (const QString &name : store.valueNames(key.root, key.view, key.path)) {
            if (const auto value = store.readValue(key.root, key.view, key.path, name))
                rows.push_back(valueRow(name, *value));
        }
    }
    printTable(context.out, {QStringLiteral("NAME"), QStringLiteral("TYPE"), QStringLiteral("DATA")}, rows);
    if (args.size() == 1) {
        for (const QString &sub : store.subKeys(key.root, key.view, key.path))
            context.out << keyName(key) << '\\' << sub << '\n';
    }
    return 0;
}

int runRegistrySetCommand(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption dword(QStringLiteral("dword"), QStringLiteral("Write a DWORD (decimal or 0x hex)."));
    const QCommandLineOption string(QStringLiteral("string"), QStringLiteral("Write a string (the default)."));
    parser.addOptions({dword, string, viewOption()});
    if (!parseCommandLine(parser, context, QStringLiteral("registry set [--view 32|64] KEY NAME VALUE [--dword|--string]"),
                          QStringLiteral("Writes a value, creating KEY when missing.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() != 3)
        throw CliError(QStringLiteral("registry set: expected KEY NAME VALUE (see --help)"));
    if (parser.isSet(dword) && parser.isSet(string))
        throw CliError(QStringLiteral("registry set: give --dword or --string, not both"));
    const KeyPath key = parseKey(QStringLiteral("set"), args[0], parser);
    RegistryValue value = RegistryValue::fromString(args[2]);
    if (parser.isSet(dword)) {
        bool ok = false;
        const QString text = args[2].trimmed();
        const qulonglong number = text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive) ? text.mid(2).toULongLong(&ok, 16)
                                                                                         : text.toULongLong(&ok, 10);
        if (!ok || number > 0xFFFFFFFFull)
            throw CliError(QStringLiteral("registry set: '%1' is not a DWORD").arg(args[2]));
        value = RegistryValue::fromDword(static_cast<std::uint32_t>(number));
    }
    RegistryStore &store = RegistryStore::instance();
    if (!store.createKey(key.root, key.view, key.path)
        || !store.writeValue(key.root, key.view, key.path, valueName(args[1]), value)) {
        context.err << "mctask: registry set: cannot write " << keyName(key) << '\n';
        return 1;
    }
    return 0;
}

int runRegistryDeleteCommand(CommandContext &context)
{
    QCommandLineParser parser;
    parser.addOption(viewOption());
    if (!parseCommandLine(parser, context, QStringLiteral("registry delete [--view 32|64] KEY [NAME]"),
                          QStringLiteral("Deletes a value of KEY, or KEY with everything below it.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.isEmpty() || args.size() > 2)
        throw CliError(QStringLiteral("registry delete: expected KEY [NAME] (see --help)"));
    const KeyPath key = parseKey(QStringLiteral("delete"), args[0], parser);
    if (key.path.isEmpty())
        throw CliError(QStringLiteral("registry delete: a root cannot be deleted"));
    RegistryStore &store = RegistryStore::instance();
    const bool deleted = args.size() == 2 ? store.deleteValue(key.root, key.view, key.path, valueName(args[1]))
                                          : store.deleteKeyTree(key.root, key.view, key.path);
    if (!deleted) {
        context.err << "mctask: registry delete: no " << (args.size() == 2 ? "value '" + args[1] + "' in " : QString())
                    << keyName(key) << '\n';
        return 1;
    }
    return 0;
}
