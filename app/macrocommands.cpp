#include "app/cli.h"
#include "app/vaultlocator.h"
#include "common/errortexts.h"
#include "host/hosterror.h"
#include "macro/macropreview.h"
#include "platform/windowspath.h"
#include "vault/embeddedvault.h"
#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#ifdef MCTASK_WITH_MACRO_CHECK
#include "cadsim/engine/codepage.h"
#include "cadsim/engine/macroengine.h"
#endif

#include <QCommandLineParser>
#include <QFile>

namespace {

// The instance or task a preview is for: an instance by its identifier
// ("{...}"), else a task by name, else an instance by number.
struct PreviewTarget {
    std::shared_ptr<IDoxTaskInstance> instance;
    int instanceId = 0; // 0 for a task
};

PreviewTarget findTarget(TaskStore &tasks, const QString &argument, const QString &command)
{
    if (argument.startsWith(QLatin1Char('{'))) {
        if (const auto row = tasks.instanceByGuid(argument))
            return {tasks.taskInstance(row->id), row->id};
        throw CliError(QStringLiteral("%1: no task instance %2").arg(command, argument));
    }
    if (const auto task = tasks.findTask(argument)) {
        auto properties = tasks.taskProperties(task->id);
        return {std::make_shared<TaskPreviewInstance>(properties, task->name, task->id), 0};
    }
    bool isNumber = false;
    const int id = argument.toInt(&isNumber);
    if (isNumber) {
        if (const auto row = tasks.instanceById(id))
            return {tasks.taskInstance(row->id), row->id};
    }
    throw CliError(QStringLiteral("%1: '%2' is neither a task nor a task instance").arg(command, argument));
}

// What the launch chose for this file: its configuration or sheet (unless
// cfgOrSheet is null) and its version (unless one is given).
void applyLaunchChoice(TaskStore &tasks, const PreviewTarget &target, const QString &filePath, QString *cfgOrSheet,
                       std::int32_t &version)
{
    if (target.instanceId == 0)
        return;
    for (const DoxCmdData &entry : tasks.instanceData(target.instanceId)) {
        if (entry.long1 != DoxObject_File || !WindowsPath::equals(entry.string1, filePath))
            continue;
        if (cfgOrSheet)
            *cfgOrSheet = entry.string2;
        if (version == 0 && entry.long2 > 0)
            version = entry.long2;
        break;
    }
}

int runMacroPreview(CommandContext &context)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    const QCommandLineOption vaultOption(QStringLiteral("vault"), QStringLiteral("The vault's folder."),
                                         QStringLiteral("DIR"));
    const QCommandLineOption configOption(
        QStringLiteral("config"),
        QStringLiteral("Configuration or sheet chosen at launch (default: the instance's, else none)."),
        QStringLiteral("NAME"));
    const QCommandLineOption versionOption(
        QStringLiteral("version"), QStringLiteral("File version to use (default: the instance's, else the latest)."),
        QStringLiteral("N"));
    parser.addOptions({help, vaultOption, configOption, versionOption});
    if (!parser.parse(QStringList{QStringLiteral("mctask")} + context.args))
        throw CliError(parser.errorText() + QStringLiteral(" (see --help)"));
    if (parser.isSet(help)) {
        context.out << "Usage: mctask macro preview [--vault DIR] [--config NAME] [--version N] INSTANCE|TASK FILE\n\n"
                       "Prints the macro that a run would hand the CAD application for FILE: the task's\n"
                       "macro text with the option placeholders filled from the instance's (or the task's)\n"
                       "variables and the file placeholders from the file's vault data. INSTANCE is an\n"
                       "instance identifier ({...}) or number, TASK a task name. For a task, which has\n"
                       "no instance yet, <TaskInstanceGuid> stays as it is.\n\n"
                    << parser.helpText().mid(parser.helpText().indexOf(QLatin1String("Options:")));
        return 0;
    }
    const QStringList args = parser.positionalArguments();
    if (args.size() != 2)
        throw CliError(QStringLiteral("macro preview: expected INSTANCE|TASK and FILE (see --help)"));
    std::int32_t version = 0;
    if (parser.isSet(versionOption)) {
        bool ok = false;
        version = parser.value(versionOption).toInt(&ok);
        if (!ok || version <= 0)
            throw CliError(QStringLiteral("macro preview: '%1' is not a version number").arg(parser.value(versionOption)));
    }

    const std::shared_ptr<VaultStore> store = openLocatedVault(parser.value(vaultOption));
    const QString filePath = store->paths().toWindows(vaultPathArgument(*store, args[1]));
    TaskStore tasks(store);
    try {
        const PreviewTarget target = findTarget(tasks, args[0], QStringLiteral("macro preview"));
        QString cfgOrSheet = parser.value(configOption);
        applyLaunchChoice(tasks, target, filePath, parser.isSet(configOption) ? nullptr : &cfgOrSheet, version);
        auto vault = std::make_shared<EmbeddedVault>(store);
        const PreviewFile file = findPreviewFile(*vault, filePath, cfgOrSheet, version);
        context.out << previewFileMacro(vault, target.instance, file);
        context.out.flush();
    } catch (const HostError &e) {
        context.err << "mctask: " << errorName(e.code()) << ": "
                    << (e.context().isEmpty() ? errorText(e.code()) : e.context()) << '\n';
        context.err.flush();
        return 1;
    }
    return 0;
}

#ifdef MCTASK_WITH_MACRO_CHECK
// "FILE:LINE:COLUMN: message" for a macro that does not compile.
int reportCheck(CommandContext &context, const QString &name, const QString &macro)
{
    const cadsim::MacroResult result = cadsim::checkMacro(macro);
    if (result.ok) {
        context.out << name << ": no syntax errors\n";
        return 0;
    }
    context.out << name << ':' << result.line << ':' << result.column << ": " << result.message << '\n';
    return 1;
}

int runMacroCheck(CommandContext &context)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this help."));
    const QCommandLineOption vaultOption(QStringLiteral("vault"), QStringLiteral("The vault's folder."),
                                         QStringLiteral("DIR"));
    parser.addOptions({help, vaultOption});
    if (!parser.parse(QStringList{QStringLiteral("mctask")} + context.args))
        throw CliError(parser.errorText() + QStringLiteral(" (see --help)"));
    if (parser.isSet(help)) {
        context.out << "Usage: mctask macro check [--vault DIR] INSTANCE|TASK FILE\n"
                       "       mctask macro check FILE.mcb\n\n"
                       "Compiles the macro a run would build for FILE (as 'macro preview' prints it), or a\n"
                       "macro file as it is, without running anything. Exit status 0 when it compiles, 1 with\n"
                       "\"FILE:LINE:COLUMN: message\" when it does not.\n\n"
                    << parser.helpText().mid(parser.helpText().indexOf(QLatin1String("Options:")));
        return 0;
    }
    const QStringList args = parser.positionalArguments();
    if (args.size() == 1) {
        QFile file(args.first());
        if (!file.open(QIODevice::ReadOnly))
            throw CliError(QStringLiteral("macro check: cannot read %1").arg(args.first()));
        return reportCheck(context, args.first(), cadsim::decodeWindows1252(file.readAll()));
    }
    if (args.size() != 2)
        throw CliError(QStringLiteral("macro check: expected INSTANCE|TASK FILE, or FILE.mcb (see --help)"));

    const std::shared_ptr<VaultStore> store = openLocatedVault(parser.value(vaultOption));
    const QString filePath = store->paths().toWindows(vaultPathArgument(*store, args[1]));
    TaskStore tasks(store);
    try {
        const PreviewTarget target = findTarget(tasks, args[0], QStringLiteral("macro check"));
        QString cfgOrSheet;
        std::int32_t version = 0;
        applyLaunchChoice(tasks, target, filePath, &cfgOrSheet, version);
        auto vault = std::make_shared<EmbeddedVault>(store);
        const PreviewFile file = findPreviewFile(*vault, filePath, cfgOrSheet, version);
        return reportCheck(context, args[1], previewFileMacro(vault, target.instance, file));
    } catch (const HostError &e) {
        context.err << "mctask: " << errorName(e.code()) << ": "
                    << (e.context().isEmpty() ? errorText(e.code()) : e.context()) << '\n';
        context.err.flush();
        return 1;
    }
}
#endif

} // namespace

#ifdef MCTASK_WITH_MACRO_CHECK
int runMacroCheckCommand(CommandContext &context)
{
    return runMacroCheck(context);
}
#endif

int runMacroPreviewCommand(CommandContext &context)
{
    return runMacroPreview(context);
}
