#include "app/cli.h"
#include "app/standinrun.h"
#include "app/vaultlocator.h"
#include "base/codepage.h"
#include "base/windowspath.h"
#include "cadsim/engine/macroengine.h"
#include "cadsim/model/cadapplication.h"
#include "cadsim/model/scriptadapters.h"
#include "common/errortexts.h"
#include "host/hosterror.h"
#include "macro/macropreview.h"
#include "platform/drivemap.h"
#include "vault/embeddedvault.h"
#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#include <QCommandLineParser>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

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

// The macro a run would build for one vault file: the instance's (or task's)
// macro with its launch choice for that file unless config or version say
// otherwise. Throws HostError for host failures, CliError for bad input.
QString buildMacroForFile(const QString &vaultDir, const QString &targetArgument, const QString &fileArgument,
                          const QString &command, const std::optional<QString> &config, std::int32_t version)
{
    const std::shared_ptr<VaultStore> store = openLocatedVault(vaultDir, VaultUse::Read);
    const QString filePath = store->paths().toWindows(vaultPathArgument(*store, fileArgument));
    TaskStore tasks(store);
    const PreviewTarget target = findTarget(tasks, targetArgument, command);
    QString cfgOrSheet = config.value_or(QString());
    applyLaunchChoice(tasks, target, filePath, config ? nullptr : &cfgOrSheet, version);
    auto vault = std::make_shared<EmbeddedVault>(store);
    const PreviewFile file = findPreviewFile(*vault, filePath, cfgOrSheet, version);
    return previewFileMacro(vault, target.instance, file);
}

int runMacroPreview(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption configOption(
        QStringLiteral("config"),
        QStringLiteral("Configuration or sheet chosen at launch (default: the instance's, else none)."),
        QStringLiteral("NAME"));
    const QCommandLineOption versionOption(
        QStringLiteral("version"), QStringLiteral("File version to use (default: the instance's, else the latest)."),
        QStringLiteral("N"));
    parser.addOptions({vaultOption(), configOption, versionOption});
    if (!parseCommandLine(parser, context, QStringLiteral("macro preview [--vault DIR] [--config NAME] [--version N] INSTANCE|TASK FILE"),
                          QStringLiteral(
                              "Prints the macro that a run would hand the CAD application for FILE: the task's\n"
                              "macro text with the option placeholders filled from the instance's (or the task's)\n"
                              "variables and the file placeholders from the file's vault data. INSTANCE is an\n"
                              "instance identifier ({...}) or number, TASK a task name. For a task, which has\n"
                              "no instance yet, <TaskInstanceGuid> stays as it is.")))
        return 0;
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

    try {
        context.out << buildMacroForFile(parser.value(vaultOption()), args[0], args[1], QStringLiteral("macro preview"),
                                         parser.isSet(configOption) ? std::optional(parser.value(configOption))
                                                                    : std::nullopt,
                                         version);
        context.out.flush();
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
    return 0;
}

// "FILE:LINE:COLUMN: message" for a macro that does not compile.
int reportCheck(CommandContext &context, const QString &name, const QString &macro)
{
    const cadsim::MacroResult result = cadsim::checkMacro(macro);
    if (result.ok) {
        context.out << name << ": no compile errors\n";
        return 0;
    }
    context.out << name << ':' << result.line << ':' << result.column << ": " << result.message << '\n';
    return 1;
}

int runMacroCheck(CommandContext &context)
{
    QCommandLineParser parser;
    parser.addOptions({vaultOption()});
    if (!parseCommandLine(parser, context, QStringLiteral("macro check [--vault DIR] INSTANCE|TASK FILE\n       mctask macro check FILE.mcb"),
                          QStringLiteral(
                              "Compiles the macro a run would build for FILE (as 'macro preview' prints it), or a\n"
                              "macro file as it is, without running anything: syntax, declared names (Option\n"
                              "Explicit), calls and argument counts, as a run checks them. Exit status 0 when it\n"
                              "compiles, 1 with \"FILE:LINE:COLUMN: message\" when it does not.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() == 1) {
        QFile file(args.first());
        if (!file.open(QIODevice::ReadOnly))
            throw CliError(QStringLiteral("macro check: cannot read %1").arg(args.first()));
        return reportCheck(context, args.first(), decodeWindows1252(file.readAll()));
    }
    if (args.size() != 2)
        throw CliError(QStringLiteral("macro check: expected INSTANCE|TASK FILE, or FILE.mcb (see --help)"));

    try {
        return reportCheck(context, args[1],
                           buildMacroForFile(parser.value(vaultOption()), args[0], args[1], QStringLiteral("macro check"),
                                             std::nullopt, 0));
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
}

// Message boxes of a bare run cannot wait for a user: they go to stderr and answer with their
// default button.
class StderrMessageBox final : public cadsim::MessageBoxHandler
{
public:
    explicit StderrMessageBox(QTextStream &err) : m_err(err) {}
    int showMessage(const QString &title, const QString &prompt, int buttons) override
    {
        m_err << "msgbox[" << title << "]: " << prompt << '\n';
        m_err.flush();
        switch (buttons & 7) {
        case 2: return 3; // vbAbortRetryIgnore: Abort
        case 3:
        case 4: return (buttons & 0x300) == 0x100 ? 7 : 6; // Yes, or No as second default
        case 5: return 4; // vbRetryCancel: Retry
        default: return 1; // vbOK
        }
    }

private:
    QTextStream &m_err;
};

// Runs a macro file in the stand-in's engine and document model, as the stand-in runs task
// macros, without a vault, a task or the stand-in's process. Debug.Print goes to stdout.
int runBareMacro(CommandContext &context, const QString &path, const QString &procedure)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw CliError(QStringLiteral("macro run: cannot read %1").arg(path));
    const QString text = decodeWindows1252(file.readAll());
    const PathResolver resolver = [](const QString &windowsPath) { return DriveMap::instance().toNativeOrSelf(windowsPath); };
    cadsim::EngineHost host;
    host.resolvePath = resolver;
    host.messageBox = std::make_shared<StderrMessageBox>(context.err);
    host.debugOutput = [&context](const QString &line) {
        context.out << line << '\n';
        context.out.flush();
    };
    host.globals.insert(QStringLiteral("application"),
                        cadsim::ScriptValue::fromObject(std::make_shared<cadsim::ScriptMacroHost>(
                            cadsim::ScriptCadApplication::create(std::make_shared<CadApplication>(resolver)))));
    host.constants = cadsim::cadConstantValues();
    cadsim::MacroEngine engine(host);
    cadsim::MacroResult result = engine.load(text);
    if (result.ok)
        result = engine.run(QLatin1String(cadsim::MacroEngine::kModuleName), procedure);
    if (result.ok)
        return 0;
    context.err << "mctask: macro run: " << path << ':' << result.line << ':' << result.column << ": run code "
                << result.runCode << ": " << result.message << '\n';
    context.err.flush();
    return result.runCode != 0 ? result.runCode : 1;
}

int runMacroRun(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption keepOption(QStringLiteral("keep"), QStringLiteral("Also write the macro to this file."),
                                        QStringLiteral("FILE"));
    const QCommandLineOption procOption(QStringLiteral("proc"),
                                        QStringLiteral("Procedure of a bare macro file to run (default: main)."),
                                        QStringLiteral("NAME"), QStringLiteral("main"));
    parser.addOptions({vaultOption(), keepOption, procOption});
    if (!parseCommandLine(parser, context, QStringLiteral("macro run [--vault DIR] [--keep FILE] INSTANCE|TASK FILE\n       mctask macro run FILE.mcb [--proc NAME]"),
                          QStringLiteral(
                              "Builds the macro a run would build for FILE (as 'macro preview' prints it), starts\n"
                              "the stand-in Mecadra (MCTASK_MCSIM, else the one of this build), runs the macro in\n"
                              "it and lists the files it saved. Nothing is added to the vault: this tries a task's\n"
                              "macro on one file. Exit status 0 when the macro ran without error, 1 otherwise.\n"
                              "With one argument, runs the procedure of a macro file in the stand-in's engine with\n"
                              "no vault or task: Debug.Print writes to stdout, message boxes to stderr. Exit status\n"
                              "0 when the run call succeeded, else the run code, with the message on stderr.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() == 1)
        return runBareMacro(context, args.first(), parser.value(procOption));
    if (args.size() != 2)
        throw CliError(QStringLiteral("macro run: expected INSTANCE|TASK and FILE (see --help)"));
    const QString program = defaultStandInProgram();
    if (program.isEmpty())
        throw CliError(QStringLiteral("macro run: no stand-in program found; set MCTASK_MCSIM"));

    QString macro;
    try {
        macro = buildMacroForFile(parser.value(vaultOption()), args[0], args[1], QStringLiteral("macro run"),
                                  std::nullopt, 0);
    } catch (const HostError &e) {
        return reportHostError(context, e);
    }
    QTemporaryDir folder;
    const QString macroFile = parser.isSet(keepOption) ? parser.value(keepOption)
                                                       : folder.filePath(QStringLiteral("McMacro1.mcb"));
    QFile out(macroFile);
    if (!out.open(QIODevice::WriteOnly) || out.write(encodeWindows1252(macro)) < 0)
        throw CliError(QStringLiteral("macro run: cannot write %1").arg(macroFile));
    out.close();

    const StandInRunResult result = runMacroInStandIn(program, QFileInfo(macroFile).absoluteFilePath());
    for (const QString &saved : result.savedFiles)
        context.out << "saved " << saved << '\n';
    if (!result.failure.isEmpty()) {
        context.out.flush();
        context.err << "mctask: macro run: " << result.failure << '\n';
        return 1;
    }
    context.out << (result.ran ? "the macro ran" : "the macro did not run") << ", error code " << result.errorCode
                << '\n';
    context.out.flush();
    return result.ran && result.errorCode == 0 ? 0 : 1;
}

} // namespace

int runMacroCheckCommand(CommandContext &context)
{
    return runMacroCheck(context);
}

int runMacroRunCommand(CommandContext &context)
{
    return runMacroRun(context);
}

int runMacroPreviewCommand(CommandContext &context)
{
    return runMacroPreview(context);
}
