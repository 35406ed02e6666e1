#include "addin/module/moduleregistration.h"
#include "settings/tasksettings.h"
#include "app/cli.h"
#include "app/taskhost.h"
#include "app/vaultlocator.h"
#include "hostservice/instancerun.h"
#include "hostservice/taskhostservice.h"
#include "hostservice/taskqueue.h"
#include "common/errortexts.h"
#include "common/translator.h"
#include "convert/conversionsettings.h"
#include "host/hosterror.h"
#include "macro/templateloader.h"
#include "platform/ipc/ipcnames.h"
#include "platform/ipc/vaultclientlistener.h"
#include "run/taskdetailsmodel.h"
#include "vault/embeddedvault.h"
#include "vault/taskstore.h"
#include "vault/vaultstore.h"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonObject>
#include <QMutex>
#include <QRegularExpression>
#include <QSysInfo>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace {

const QString SetupPagesMissing = QStringLiteral("the set-up pages of this task kind are not available yet");
const QString InstanceExpected = QStringLiteral("an instance id is expected (its number or its {identifier})");
// What the add-in answers when a command needs a page it does not have.
constexpr HRESULT PageMissing = E_NOTIMPL;

// The options every task command may take; each command adds those it uses.
struct TaskOptions {
    const QCommandLineOption &vault = vaultOption();
    const QCommandLineOption &json = jsonOption();
    QCommandLineOption gui{QStringLiteral("gui"), QStringLiteral("Open the host's windows.")};
    QCommandLineOption kind{QStringLiteral("kind"), QStringLiteral("convert, print or script."), QStringLiteral("KIND")};
    QCommandLineOption set{QStringLiteral("set"), QStringLiteral("An instance variable (repeatable)."),
                           QStringLiteral("KEY=VALUE")};
};

// Parses the arguments; false (after printing the help) when --help was given.
bool parseOptions(CommandContext &context, QCommandLineParser &parser, const TaskOptions &options,
                  const QList<QCommandLineOption> &used, const QString &usage, const QString &description)
{
    // "-1" would read as an unknown option "1".
    if (usage.contains(QLatin1String("INSTANCE"))) {
        static const QRegularExpression negative(QStringLiteral("^-[0-9]+$"));
        for (const QString &argument : context.args)
            if (negative.match(argument).hasMatch())
                throw CliError(QStringLiteral("%1: '%2': %3").arg(usage.section(' ', 0, 1), argument, InstanceExpected));
    }
    parser.addOption(options.vault);
    parser.addOptions(used);
    return parseCommandLine(parser, context, usage, description);
}

TaskRow requireTask(TaskStore &tasks, const QString &name)
{
    if (const auto task = tasks.findTask(name))
        return *task;
    throw CliError(QStringLiteral("no task '%1'").arg(name));
}

// An instance by its identifier ("{...}") or its number.
InstanceRow requireInstance(TaskStore &tasks, const QString &argument)
{
    std::optional<InstanceRow> row;
    if (argument.startsWith(QLatin1Char('{'))) {
        row = tasks.instanceByGuid(argument);
    } else {
        bool isNumber = false;
        const int id = argument.toInt(&isNumber);
        if (!isNumber || id <= 0)
            throw CliError(QStringLiteral("'%1': %2").arg(argument, InstanceExpected));
        row = tasks.instanceById(id);
    }
    if (!row)
        throw CliError(QStringLiteral("no task instance '%1'").arg(argument));
    return *row;
}

QString hresultHex(HRESULT hr)
{
    return QStringLiteral("0x") + QString::number(static_cast<quint32>(hr), 16).rightJustified(8, QLatin1Char('0')).toUpper();
}

QString describeError(HRESULT hr)
{
    return errorName(hr) + QStringLiteral(": ") + errorText(hr);
}

// "KEY=VALUE" is a text; "KEY:int=", "KEY:bool=" and "KEY:real=" give the
// other kinds. Anything else is bad input.
NamedVariant parseAssignment(const QString &argument)
{
    const qsizetype equals = argument.indexOf(QLatin1Char('='));
    if (equals <= 0)
        throw CliError(QStringLiteral("'%1' is not KEY=VALUE").arg(argument));
    QString key = argument.left(equals);
    const QString value = argument.mid(equals + 1);
    QString kind = QStringLiteral("text");
    if (const qsizetype colon = key.lastIndexOf(QLatin1Char(':')); colon >= 0) {
        kind = key.mid(colon + 1);
        key = key.left(colon);
    }
    if (key.isEmpty() || key.trimmed() != key)
        throw CliError(QStringLiteral("'%1' has no usable variable name").arg(argument));
    bool ok = false;
    if (kind == QLatin1String("text"))
        return {key, Variant::fromBStr(value)};
    if (kind == QLatin1String("int")) {
        const int number = value.toInt(&ok);
        if (!ok)
            throw CliError(QStringLiteral("'%1': '%2' is not a 32-bit integer").arg(argument, value));
        return {key, Variant::fromI4(number)};
    }
    if (kind == QLatin1String("bool")) {
        const QString lower = value.toLower();
        if (lower == QLatin1String("true") || lower == QLatin1String("1") || lower == QLatin1String("yes"))
            return {key, Variant::fromBool(true)};
        if (lower == QLatin1String("false") || lower == QLatin1String("0") || lower == QLatin1String("no"))
            return {key, Variant::fromBool(false)};
        throw CliError(QStringLiteral("'%1': '%2' is not true or false").arg(argument, value));
    }
    if (kind == QLatin1String("real")) {
        // Reals are kept as the add-in keeps its margins: single precision.
        const float number = value.toFloat(&ok);
        if (!ok || !std::isfinite(number))
            throw CliError(QStringLiteral("'%1': '%2' is not a number").arg(argument, value));
        return {key, Variant::fromR4(number)};
    }
    throw CliError(QStringLiteral("'%1': unknown kind '%2' (text, int, bool or real)").arg(argument, kind));
}

std::vector<NamedVariant> parseAssignments(const QStringList &arguments)
{
    std::vector<NamedVariant> values;
    for (const QString &argument : arguments)
        values.push_back(parseAssignment(argument));
    return values;
}

QJsonValue variantJson(const Variant &value)
{
    switch (value.type()) {
    case VarType::Bool: return value.toBool();
    case VarType::I2:
    case VarType::I4:
    case VarType::UI1: return value.toI4();
    case VarType::R4: return QString::number(value.r4(), 'g', 7).toDouble();
    case VarType::R8: return value.toR8();
    case VarType::Empty:
    case VarType::Other: return QJsonValue::Null;
    default: return value.toText();
    }
}

// The form "task set" takes back.
QString variantAssignment(const QString &name, const Variant &value)
{
    switch (value.type()) {
    case VarType::Bool: return name + QStringLiteral(":bool=") + (value.toBool() ? "true" : "false");
    case VarType::I2:
    case VarType::I4:
    case VarType::UI1: return name + QStringLiteral(":int=") + QString::number(value.toI4());
    case VarType::R4: return name + QStringLiteral(":real=") + QString::number(value.r4(), 'g', 7);
    case VarType::R8: return name + QStringLiteral(":real=") + QString::number(value.toR8(), 'g', 15);
    default: return name + QLatin1Char('=') + value.toText();
    }
}

std::unique_ptr<TaskHost> openHost(const std::shared_ptr<VaultStore> &store, CommandContext &context)
{
    QString error;
    auto host = TaskHost::open(store, context.err, error);
    if (!host) {
        context.err << "mctask: " << error << '\n';
        context.err.flush();
    }
    return host;
}

// Says on err why a set-up did not go through; true when it did.
bool reportSetup(const SetupOutcome &outcome, const QString &taskName, CommandContext &context)
{
    if (failed(outcome.setupResult)) {
        context.err << "mctask: task '" << taskName << "': "
                    << (outcome.setupResult == PageMissing ? SetupPagesMissing : QStringLiteral("set-up failed")) << " ("
                    << describeError(outcome.setupResult) << ")\n";
    } else if (!outcome.confirmed) {
        context.err << "mctask: task '" << taskName << "': set-up cancelled\n";
    } else if (!outcome.refusedPage.isEmpty()) {
        context.err << "mctask: task '" << taskName << "': the page '" << outcome.refusedPage
                    << "' refused its values; nothing was saved from it\n";
    } else if (failed(outcome.buttonResult)) {
        context.err << "mctask: task '" << taskName << "': saving the set-up failed ("
                    << describeError(outcome.buttonResult) << ")\n";
    } else {
        return true;
    }
    context.err.flush();
    return false;
}

SetupOutcome runSetup(TaskHost &host, int taskId, bool gui)
{
    if (!gui)
        return host.setupWithOk(taskId);
    SetupOutcome outcome;
    const auto props = host.properties(taskId);
    outcome.setupResult = host.beginSetup(props);
    if (succeeded(outcome.setupResult))
        showSetupDialog(host, props, outcome);
    return outcome;
}

int runCreate(CommandContext &context)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {o.kind}, QStringLiteral("task create [--vault DIR] NAME --kind convert|print|script"),
                      QStringLiteral("Creates a task of the add-in, stores its kind and its kind's macro template,\n"
                                     "and sets it up as an administrator who confirms the set-up dialog.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() != 1)
        throw CliError(QStringLiteral("task create: expected one NAME (see --help)"));
    static const QStringList kinds{QStringLiteral("convert"), QStringLiteral("print"), QStringLiteral("script")};
    const qsizetype kindIndex = kinds.indexOf(parser.value(o.kind));
    if (kindIndex < 0)
        throw CliError(QStringLiteral("task create: --kind must be convert, print or script"));
    const QString name = args.first();
    if (name.trimmed().isEmpty())
        throw CliError(QStringLiteral("task create: the name is empty"));

    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    if (tasks.findTask(name))
        throw CliError(QStringLiteral("task create: a task '%1' exists already").arg(name));
    const std::int32_t type = static_cast<std::int32_t>(kindIndex) + 1;
    static const int templates[] = {ConversionTemplate, PrintTemplate, DefaultScriptTemplate};
    QString templateProblem;
    const QString script =
        loadScriptTemplate(templates[kindIndex], [&](const QString &message) { templateProblem = message; });
    if (script.isEmpty()) {
        context.err << "mctask: task create: the macro template cannot be loaded: " << templateProblem << '\n';
        return 1;
    }
    // The add-in first, so that a task is never left without a host to set it up.
    const auto host = openHost(store, context);
    if (!host)
        return 1;

    const TaskRow task = tasks.createTask(name, McTaskAddInIds::ClassId);
    tasks.setTaskVariable(task.id, QStringLiteral("__type"), Variant::fromI4(type));
    tasks.setTaskVariable(task.id, QStringLiteral("__script"), Variant::fromBStr(script));

    const SetupOutcome outcome = host->setupWithOk(task.id);
    if (outcome.setupResult == PageMissing) {
        context.err << "mctask: created task '" << name << "' without set-up: " << SetupPagesMissing << " ("
                    << describeError(outcome.setupResult) << ")\n";
        context.out << "created task " << name << '\n';
        return 0;
    }
    if (!reportSetup(outcome, name, context)) {
        context.out << "created task " << name << " (set-up incomplete)\n";
        return 1;
    }
    context.out << "created task " << name << '\n';
    return 0;
}

int runSet(CommandContext &context)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {}, QStringLiteral("task set [--vault DIR] NAME KEY=VALUE..."),
                      QStringLiteral("Sets task variables: KEY=TEXT, KEY:int=N, KEY:bool=true|false, KEY:real=X.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() < 2)
        throw CliError(QStringLiteral("task set: expected NAME and at least one KEY=VALUE (see --help)"));
    const std::vector<NamedVariant> values = parseAssignments(args.mid(1));
    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    const TaskRow task = requireTask(tasks, args.first());
    for (const auto &[key, value] : values)
        tasks.setTaskVariable(task.id, key, value);
    return 0;
}

int runGet(CommandContext &context)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {o.json}, QStringLiteral("task get [--vault DIR] NAME [KEY...] [--json]"),
                      QStringLiteral("Prints task variables (all, or the named ones) in the form 'task set' takes;\n"
                                     "with --json one object of name and value. A named variable that is not set\n"
                                     "is null in JSON and makes the exit status 1.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.isEmpty())
        throw CliError(QStringLiteral("task get: expected NAME (see --help)"));
    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    const TaskRow task = requireTask(tasks, args.first());

    std::vector<std::pair<QString, std::optional<Variant>>> values;
    if (args.size() == 1) {
        for (const auto &[key, value] : tasks.taskVariables(task.id))
            values.emplace_back(key, value);
    } else {
        for (const QString &key : args.mid(1))
            values.emplace_back(key, tasks.taskVariable(task.id, key));
    }
    bool missing = false;
    QJsonObject object;
    for (const auto &[key, value] : values) {
        missing = missing || !value;
        if (parser.isSet(o.json))
            object.insert(key, value ? variantJson(*value) : QJsonValue::Null);
        else if (value && value->type() == VarType::BStr && value->bstr().contains(QLatin1Char('\n')))
            context.out << key << "=(" << value->bstr().count(QLatin1Char('\n')) + 1
                        << " lines of text; see --json)\n"; // one line per variable
        else if (value)
            context.out << variantAssignment(key, *value) << '\n';
        else
            context.err << "mctask: task '" << task.name << "' has no variable " << key << '\n';
    }
    if (parser.isSet(o.json))
        printJson(context.out, object);
    return missing ? 1 : 0;
}

int runSetupCommand(CommandContext &context)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {o.gui}, QStringLiteral("task setup [--vault DIR] NAME [--gui]"),
                      QStringLiteral("Sets a task up through the add-in: its set-up pages are loaded and, without\n"
                                     "--gui, confirmed with \"OK\" as they are; with --gui the set-up dialog opens.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() != 1)
        throw CliError(QStringLiteral("task setup: expected one NAME (see --help)"));
    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    const TaskRow task = requireTask(tasks, args.first());
    const auto host = openHost(store, context);
    if (!host)
        return 1;
    const SetupOutcome outcome = runSetup(*host, task.id, parser.isSet(o.gui));
    if (!reportSetup(outcome, task.name, context))
        return 1;
    context.out << "task " << task.name << " set up\n";
    return 0;
}

std::int32_t taskType(TaskStore &tasks, int taskId)
{
    const auto value = tasks.taskVariable(taskId, QStringLiteral("__type"));
    return value && !value->isEmpty() ? value->toI4() : 3;
}

// A conversion launch may change only what the task's set-up left open to
// the user; the settings page of the add-in decides what that is.
void refuseFixedConversionValues(TaskStore &tasks, const TaskRow &task, const std::vector<NamedVariant> &values)
{
    StoredTaskProperties properties(tasks, task.id);
    ConversionSettingsValues page(true, {});
    if (failed(page.load(properties)))
        return;
    const QStringList open = page.openKeys();
    for (const auto &[key, value] : values) {
        if (conversionSettingKeys().contains(key) && !open.contains(key))
            throw CliError(QStringLiteral("task launch: %1 is fixed by the set-up of task '%2'").arg(key, task.name));
    }
}

// The conversion settings the launch confirmed, as the instance now holds them.
void printConversionSettings(CommandContext &context, TaskStore &tasks, int instanceId)
{
    for (const QString &key : conversionSettingKeys())
        if (const auto value = tasks.instanceValue(instanceId, key))
            context.err << "  " << variantAssignment(key, *value) << '\n';
    context.err.flush();
}

// One launch argument as the host hands it to the add-in.
DoxCmdData launchEntry(VaultStore &store, EmbeddedVault &vault, const QString &argument)
{
    const QString windowsPath = store.paths().toWindows(vaultPathArgument(store, argument));
    std::shared_ptr<IDoxFile> file;
    std::shared_ptr<IDoxFolder> folder;
    DoxCmdData entry;
    if (vault.GetFileFromPath(windowsPath, file, folder) == S_OK && file && folder) {
        entry.objectId1 = file->GetID();
        entry.objectId2 = folder->GetID();
        entry.string1 = folder->GetLocalPath() + QLatin1Char('\\') + file->GetName();
        entry.long1 = DoxObject_File;
        entry.long2 = file->GetCurrentVersion();
        return entry;
    }
    if (vault.GetFolderFromPath(windowsPath, folder) == S_OK && folder) {
        entry.objectId1 = folder->GetID();
        entry.string1 = folder->GetLocalPath();
        entry.long1 = DoxObject_Folder;
        return entry;
    }
    throw CliError(QStringLiteral("%1 is neither a file nor a folder of the vault").arg(argument));
}

int runLaunch(CommandContext &context)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {o.set, o.gui},
                      QStringLiteral("task launch [--vault DIR] NAME [FILE...] [--set KEY=VALUE]... [--gui]"),
                      QStringLiteral("Launches a task on vault files and folders as a user would, and prints the new\n"
                                     "instance's number as the last line. --set writes instance variables only.\n"
                                     "A page the add-in hands back is confirmed with \"OK\" (shown with --gui).\n"
                                     "A print task prints without its dialog unless --gui shows it.\n"
                                     "With --gui and no FILE, the user picks files and folders first.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.isEmpty())
        throw CliError(QStringLiteral("task launch: expected NAME (see --help)"));
    const std::vector<NamedVariant> values = parseAssignments(parser.values(o.set));
    // The launch writes these itself; a value given here would be lost.
    for (const auto &[key, value] : values)
        if (key.compare(TaskKeys::SelectionList, Qt::CaseInsensitive) == 0
            || key.compare(TaskKeys::OutputList, Qt::CaseInsensitive) == 0)
            throw CliError(QStringLiteral("task launch: %1 is kept by the add-in and cannot be set").arg(key));
    // Without files the add-in would ask with its selection dialog, which
    // only a launch with --gui can show.
    if (args.size() < 2 && !parser.isSet(o.gui))
        throw CliError(QStringLiteral("task launch: name the files or folders to launch on (or use --gui to pick them)"));
    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    const TaskRow task = requireTask(tasks, args.first());
    const bool conversion = taskType(tasks, task.id) == 1;
    if (conversion)
        refuseFixedConversionValues(tasks, task, values);
    EmbeddedVault vault(store);
    DoxCmdDataArray data;
    for (const QString &argument : args.mid(1))
        data.push_back(launchEntry(*store, vault, argument));
    const auto host = openHost(store, context);
    if (!host)
        return 1;

    const InstanceRow row = tasks.createInstance(task.id);
    for (const auto &[key, value] : values)
        tasks.setInstanceVariable(row.id, key, value);
    // Without --gui nobody could answer the print dialog: it does its work
    // unseen, as a task set up without it does.
    if (taskType(tasks, task.id) == 2 && !parser.isSet(o.gui))
        tasks.setInstanceVariable(row.id, TaskKeys::PrinterShowPrintDlg, Variant::fromBool(false));
    tasks.setInstanceData(row.id, data);

    const auto instance = host->instance(row.id);
    DoxCmd cmd = host->command(DoxCmd_TaskLaunch, instance);
    HRESULT hr = host->send(cmd, data);
    // The add-in may have replaced the selection (its selection dialog).
    tasks.setInstanceData(row.id, data);
    if (succeeded(hr) && cmd.cancel == 0 && !cmd.comment.isEmpty()) {
        // A page to confirm: the user presses "OK" (or decides, with --gui).
        bool confirmed = true;
        if (parser.isSet(o.gui) && cmd.window)
            confirmed = showLaunchPage(cmd.window, cmd.comment);
        DoxCmd button = host->command(DoxCmd_TaskLaunchButton, instance,
                                      confirmed ? QStringLiteral("OK") : QStringLiteral("Cancel"));
        DoxCmdDataArray none;
        hr = host->send(button, none);
        if (!confirmed)
            cmd.cancel = -1;
        else if (succeeded(hr) && conversion && !parser.isSet(o.gui))
            printConversionSettings(context, tasks, row.id);
    }
    const QString number = QString::number(row.id);
    if (failed(hr)) {
        tasks.setStatus(row.id, TaskStatus_Finished, hr, QStringLiteral("The launch failed."), {}, std::nullopt);
        context.err << "mctask: launching task '" << task.name << "' failed (" << describeError(hr) << ")\n";
        context.out << number << '\n';
        return 1;
    }
    if (cmd.cancel != 0) {
        tasks.setStatus(row.id, TaskStatus_Finished, S_FALSE, QStringLiteral("The launch was cancelled."), {},
                        std::nullopt);
        context.err << "mctask: the launch of task '" << task.name << "' was cancelled\n";
        context.out << number << '\n';
        return 1;
    }
    context.out << number << '\n';
    return 0;
}

// "[#####-----] 5/10 text": the run's progress, one line per report.
QString progressLine(std::int32_t position, std::int32_t maximum, const QString &text)
{
    constexpr int Width = 20;
    const int filled = maximum > 0 ? static_cast<int>(std::clamp<qint64>(qint64(position) * Width / maximum, 0, Width)) : 0;
    QString line = QStringLiteral("[%1%2] %3/%4")
                       .arg(QString(filled, QLatin1Char('#')), QString(Width - filled, QLatin1Char('-')))
                       .arg(position)
                       .arg(maximum);
    if (!text.isEmpty())
        line += QLatin1Char(' ') + text;
    return line;
}

int runRun(CommandContext &context)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {o.json}, QStringLiteral("task run [--vault DIR] INSTANCE [--json]"),
                      QStringLiteral("Claims a launched instance and runs it here, as the task host does, and\n"
                                     "reports how it ended: exit status 0 when it finished successfully, 1\n"
                                     "otherwise, 2 when another run holds it or it has ended. The files the run\n"
                                     "announces to the vault client are listed once each, with a count.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() != 1)
        throw CliError(QStringLiteral("task run: expected one INSTANCE (see --help)"));
    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    TaskQueue queue(store);
    const InstanceRow before = requireInstance(tasks, args.first());
    const TaskHolder holder{QSysInfo::machineHostName(), QCoreApplication::applicationPid(), 0};
    const QueuePolicy policy;
    // Refused before the add-in is loaded; the claim itself decides for good.
    if (const QString refused = queue.refusal(before); !refused.isEmpty())
        throw CliError(QStringLiteral("task run: ") + refused);
    const auto host = openHost(store, context);
    if (!host)
        return 1;
    const ClaimOutcome claimed = queue.claim(before.id, holder, policy);
    if (claimed.kind != ClaimOutcome::Kind::Claimed)
        throw CliError(QStringLiteral("task run: ") + claimed.refusal);
    LeaseKeeper leases(openLocatedVault(parser.value(o.vault)),
                       LeaseKeeper::Options{holder.host, holder.pid, 1, policy.leaseMs, false});
    leases.start();
    const bool json = parser.isSet(o.json);

    // Stand where the vault client serves its pipe while the run goes on.
    VaultClientListener listener(IpcNames::defaultFolder());
    if (!listener.start()) {
        context.err << "mctask: cannot listen on the vault client's pipe (another listener?); notifications are not shown\n";
        context.err.flush();
    }

    const bool terminal = isatty(fileno(stderr)) != 0;
    bool barShown = false;
    ProgressObserver progress;
    if (!json && terminal) {
        // One bar, redrawn in place.
        progress = [&context, &barShown](std::int32_t position, std::int32_t maximum, const QString &text) {
            context.err << "\r\033[K" << progressLine(position, maximum, text);
            context.err.flush();
            barShown = true;
        };
    } else if (!json) {
        progress = [&context](std::int32_t position, std::int32_t maximum, const QString &text) {
            context.err << progressLine(position, maximum, text) << '\n';
            context.err.flush();
        };
    }
    const RunReport report = runClaimedInstance(*host, claimed.claim, progress);
    leases.stop();
    listener.stop();
    if (barShown) {
        context.err << '\n';
        context.err.flush();
    }

    const std::vector<VaultClientListener::Tally> notices = listener.tally();
    const InstanceRow &after = report.end;
    const QString message = after.message.value_or(QString());
    const int status = after.status == TaskStatus_FinishedOk ? 0 : 1;
    if (json) {
        QJsonArray notifications;
        for (const VaultClientListener::Tally &t : notices)
            notifications.append(QJsonObject{{QStringLiteral("code"), t.message.code},
                                             {QStringLiteral("path"), t.message.path},
                                             {QStringLiteral("count"), t.count}});
        printJson(context.out,
                  QJsonObject{{QStringLiteral("id"), after.id},
                              {QStringLiteral("guid"), after.guid},
                              {QStringLiteral("status"), after.status},
                              {QStringLiteral("statusText"), taskStatusText(after.status)},
                              {QStringLiteral("hresult"), static_cast<qint64>(after.result)},
                              {QStringLiteral("hresultText"), hresultHex(after.result)},
                              {QStringLiteral("errorName"), errorName(after.result)},
                              {QStringLiteral("message"), message},
                              {QStringLiteral("commandResult"), hresultHex(report.commandResult)},
                              {QStringLiteral("cancelled"), report.cancelled},
                              {QStringLiteral("attempt"), after.attempt},
                              {QStringLiteral("notifications"), notifications}});
    } else {
        for (const VaultClientListener::Tally &t : notices)
            context.err << "vault client: " << (t.message.valid ? QString::number(t.message.code) : QStringLiteral("?"))
                        << ' ' << t.message.path << (t.count > 1 ? QStringLiteral(" (%1 times)").arg(t.count) : QString())
                        << '\n';
        context.err.flush();
        context.out << "instance " << after.id << ": " << taskStatusText(after.status) << " (status " << after.status
                    << ", " << errorName(after.result) << ")";
        if (!message.isEmpty())
            context.out << ": " << message;
        context.out << '\n';
    }
    return status;
}

int runDetails(CommandContext &context)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {o.json, o.gui},
                      QStringLiteral("task details [--vault DIR] INSTANCE [--json] [--gui]"),
                      QStringLiteral("Shows the files of an instance as its details page lists them: the selection\n"
                                     "until it has finished, then what its run produced or printed.")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() != 1)
        throw CliError(QStringLiteral("task details: expected one INSTANCE (see --help)"));
    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    const InstanceRow row = requireInstance(tasks, args.first());
    const auto host = openHost(store, context);
    if (!host)
        return 1;

    const auto instance = host->instance(row.id);
    DoxCmd cmd = host->command(DoxCmd_TaskDetails, instance);
    DoxCmdDataArray none;
    const HRESULT hr = host->send(cmd, none);
    const QAbstractItemView *list =
        succeeded(hr) && cmd.window ? cmd.window->findChild<QAbstractItemView *>(QStringLiteral("list391")) : nullptr;
    if (!list || !list->model()) {
        context.err << "mctask: the add-in gave no details page for instance " << row.id << " ("
                    << describeError(failed(hr) ? hr : PageMissing) << ")\n";
        return 1;
    }
    if (parser.isSet(o.gui)) {
        showDetails(cmd.window, cmd.comment, TaskDetailsModel(3, false));
        return 0;
    }

    // What the page's list shows, column by column.
    const QAbstractItemModel &model = *list->model();
    QStringList captions;
    for (int c = 0; c < model.columnCount(); ++c)
        captions.append(model.headerData(c, Qt::Horizontal).toString());
    std::vector<QStringList> rows;
    for (int r = 0; r < model.rowCount(); ++r) {
        QStringList cells;
        for (int c = 0; c < model.columnCount(); ++c)
            cells.append(model.data(model.index(r, c)).toString());
        rows.push_back(cells);
    }
    if (parser.isSet(o.json)) {
        QJsonArray jsonRows;
        for (const QStringList &cells : rows)
            jsonRows.append(QJsonArray::fromStringList(cells));
        printJson(context.out, QJsonObject{{QStringLiteral("caption"), cmd.comment},
                                           {QStringLiteral("finished"), isFinishedStatus(row.status)},
                                           {QStringLiteral("columns"), QJsonArray::fromStringList(captions)},
                                           {QStringLiteral("rows"), jsonRows}});
    } else {
        context.out << cmd.comment << '\n';
        printTable(context.out, captions, rows);
    }
    return 0;
}

int runInstances(CommandContext &context)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {o.json}, QStringLiteral("task instances [--vault DIR] [--json]"),
                      QStringLiteral("Lists the task instances, oldest first: status, the host and worker that\n"
                                     "holds or ran each, the attempt, progress, started and finished times.")))
        return 0;
    if (!parser.positionalArguments().isEmpty())
        throw CliError(QStringLiteral("task instances: no arguments expected (see --help)"));
    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    QJsonArray array;
    std::vector<QStringList> rows;
    for (const InstanceRow &row : tasks.listInstances()) {
        const auto task = tasks.taskById(row.taskId);
        const QString taskName = task ? task->name : QString();
        const QString message = row.message.value_or(QString());
        const QString progress = QStringLiteral("%1/%2").arg(row.progressPos).arg(row.progressMax);
        array.append(QJsonObject{{QStringLiteral("id"), row.id},
                                 {QStringLiteral("guid"), row.guid},
                                 {QStringLiteral("task"), taskName},
                                 {QStringLiteral("status"), row.status},
                                 {QStringLiteral("statusText"), taskStatusText(row.status)},
                                 {QStringLiteral("hresult"), static_cast<qint64>(row.result)},
                                 {QStringLiteral("message"), message},
                                 {QStringLiteral("progress"), row.progressPos},
                                 {QStringLiteral("progressMax"), row.progressMax},
                                 {QStringLiteral("created"), row.created},
                                 {QStringLiteral("host"), row.holderHost},
                                 {QStringLiteral("pid"), row.holderPid},
                                 {QStringLiteral("worker"), row.holderWorker},
                                 {QStringLiteral("attempt"), row.attempt},
                                 {QStringLiteral("held"), row.held()},
                                 {QStringLiteral("started"), row.started},
                                 {QStringLiteral("finished"), row.finished}});
        const QString holder = row.holderHost.isEmpty() ? QString()
                                                         : QStringLiteral("%1 (%2)").arg(row.holderHost).arg(row.holderPid);
        rows.push_back({QString::number(row.id), taskName, taskStatusText(row.status), holder,
                        row.holderHost.isEmpty() ? QString() : QString::number(row.holderWorker),
                        QString::number(row.attempt), progress, row.started, row.finished, message});
    }
    if (parser.isSet(o.json))
        printJson(context.out, array);
    else
        printTable(context.out,
                   {"ID", "TASK", "STATUS", "HOST", "WORKER", "ATTEMPT", "PROGRESS", "STARTED", "FINISHED", "MESSAGE"},
                   rows);
    return 0;
}

// suspend, resume and cancel are requests the running add-in picks up.
int runRequest(CommandContext &context, const QString &verb, std::int32_t requested)
{
    QCommandLineParser parser;
    TaskOptions o;
    if (!parseOptions(context, parser, o, {}, QStringLiteral("task %1 [--vault DIR] INSTANCE").arg(verb),
                      QStringLiteral("Asks the run of an instance to %1.").arg(verb)))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() != 1)
        throw CliError(QStringLiteral("task %1: expected one INSTANCE (see --help)").arg(verb));
    const auto store = openLocatedVault(parser.value(o.vault));
    TaskStore tasks(store);
    const InstanceRow row = requireInstance(tasks, args.first());
    if (isFinishedStatus(row.status))
        throw CliError(QStringLiteral("task %1: instance %2 has ended already").arg(verb).arg(row.id));
    const bool suspended = row.status == TaskStatus_Suspended || row.status == TaskStatus_SuspendRequested;
    if (requested == TaskStatus_ResumeRequested && !suspended)
        throw CliError(QStringLiteral("task resume: instance %1 is not suspended").arg(row.id));
    if (requested == TaskStatus_SuspendRequested && suspended)
        throw CliError(QStringLiteral("task suspend: instance %1 is suspended already").arg(row.id));
    tasks.setStatusOnly(row.id, requested);
    context.out << "instance " << row.id << ": " << taskStatusText(requested) << '\n';
    return 0;
}

} // namespace

int runTaskCreateCommand(CommandContext &context) { return runCreate(context); }
int runTaskSetCommand(CommandContext &context) { return runSet(context); }
int runTaskGetCommand(CommandContext &context) { return runGet(context); }
int runTaskSetupCommand(CommandContext &context) { return runSetupCommand(context); }
int runTaskLaunchCommand(CommandContext &context) { return runLaunch(context); }
int runTaskRunCommand(CommandContext &context) { return runRun(context); }
int runTaskDetailsCommand(CommandContext &context) { return runDetails(context); }
int runTaskInstancesCommand(CommandContext &context) { return runInstances(context); }
int runTaskSuspendCommand(CommandContext &context)
{
    return runRequest(context, QStringLiteral("suspend"), TaskStatus_SuspendRequested);
}
int runTaskResumeCommand(CommandContext &context)
{
    return runRequest(context, QStringLiteral("resume"), TaskStatus_ResumeRequested);
}
int runTaskCancelCommand(CommandContext &context)
{
    return runRequest(context, QStringLiteral("cancel"), TaskStatus_CancelRequested);
}
