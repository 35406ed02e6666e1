#include "app/cli.h"
#include "app/taskhost.h"
#include "app/vaultlocator.h"
#include "hostservice/taskhostservice.h"
#include "hostservice/taskqueue.h"
#include "platform/terminationsignals.h"
#include "vault/vaultstore.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSysInfo>

#include <algorithm>
#include <mutex>

namespace {

// A whole number option within limits, or bad input.
qint64 numberOption(const QCommandLineParser &parser, const QCommandLineOption &option, qint64 fallback, qint64 least)
{
    if (!parser.isSet(option))
        return fallback;
    bool ok = false;
    const qint64 value = parser.value(option).toLongLong(&ok);
    if (!ok || value < least)
        throw CliError(QStringLiteral("host serve: --%1 must be a whole number of at least %2")
                           .arg(option.names().first())
                           .arg(least));
    return value;
}

QString eventLine(const HostEvent &event)
{
    if (event.kind == HostEvent::Kind::ServerLost)
        return QStringLiteral("%1 lost the vault server, trying again: %2").arg(event.time, event.message);
    if (event.kind == HostEvent::Kind::ServerRegained)
        return QStringLiteral("%1 the vault server is back").arg(event.time);
    const bool started = event.kind == HostEvent::Kind::Started;
    QString line = QStringLiteral("%1 %2 task \"%3\" instance %4 worker %5 status %6 (%7)")
                       .arg(event.time, started ? QStringLiteral("started") : QStringLiteral("ended  "), event.task)
                       .arg(event.instanceId)
                       .arg(event.worker)
                       .arg(event.status)
                       .arg(taskStatusText(event.status));
    if (!started && !event.message.isEmpty())
        line += QStringLiteral(": ") + event.message;
    return line;
}

QString eventName(HostEvent::Kind kind)
{
    switch (kind) {
    case HostEvent::Kind::Started:
        return QStringLiteral("started");
    case HostEvent::Kind::Ended:
        return QStringLiteral("ended");
    case HostEvent::Kind::ServerLost:
        return QStringLiteral("serverLost");
    case HostEvent::Kind::ServerRegained:
        return QStringLiteral("serverRegained");
    }
    return {};
}

QJsonObject eventJson(const HostEvent &event)
{
    if (event.kind == HostEvent::Kind::ServerLost || event.kind == HostEvent::Kind::ServerRegained)
        return QJsonObject{{QStringLiteral("event"), eventName(event.kind)},
                           {QStringLiteral("time"), event.time},
                           {QStringLiteral("host"), event.host},
                           {QStringLiteral("message"), event.message}};
    return QJsonObject{{QStringLiteral("event"), eventName(event.kind)},
                       {QStringLiteral("time"), event.time},
                       {QStringLiteral("host"), event.host},
                       {QStringLiteral("task"), event.task},
                       {QStringLiteral("instance"), event.instanceId},
                       {QStringLiteral("worker"), event.worker},
                       {QStringLiteral("status"), event.status},
                       {QStringLiteral("statusText"), taskStatusText(event.status)},
                       {QStringLiteral("message"), event.message}};
}

int runServe(CommandContext &context)
{
    QCommandLineParser parser;
    const QCommandLineOption name(QStringLiteral("name"), QStringLiteral("The host's name in its claims (default: the machine's)."),
                                  QStringLiteral("HOST"));
    const QCommandLineOption workers(QStringLiteral("workers"), QStringLiteral("Instances run side by side (default 1)."),
                                     QStringLiteral("N"));
    const QCommandLineOption lease(QStringLiteral("lease"),
                                   QStringLiteral("Seconds a claim lasts without a heartbeat (default 30)."),
                                   QStringLiteral("SECONDS"));
    const QCommandLineOption poll(QStringLiteral("poll"), QStringLiteral("How often an idle worker looks (default 1000)."),
                                  QStringLiteral("MS"));
    const QCommandLineOption attempts(QStringLiteral("attempts"),
                                      QStringLiteral("Runs of an instance whose host was lost (default 2)."),
                                      QStringLiteral("N"));
    const QCommandLineOption once(QStringLiteral("once"), QStringLiteral("End when nothing waits or runs any more."));
    parser.addOptions({vaultOption(), name, workers, lease, poll, attempts, once, jsonOption()});
    if (!parseCommandLine(parser, context,
                          QStringLiteral("host serve [--vault DIR] [--name HOST] [--workers N] [--lease SECONDS] "
                                         "[--poll MS] [--attempts N] [--once] [--json]"),
                          QStringLiteral("Runs the task host: each worker claims the oldest waiting instance and runs\n"
                                         "it through the add-in with a Mecadra of its own; one line per instance\n"
                                         "started and ended. SIGTERM or SIGINT: take nothing new and let running\n"
                                         "instances finish; a second one asks them to cancel between files.")))
        return 0;
    if (!parser.positionalArguments().isEmpty())
        throw CliError(QStringLiteral("host serve: no arguments expected (see --help)"));
    TaskHostService::Options options;
    options.name = parser.isSet(name) ? parser.value(name) : QSysInfo::machineHostName();
    if (options.name.trimmed().isEmpty())
        throw CliError(QStringLiteral("host serve: --name is empty"));
    options.pid = QCoreApplication::applicationPid();
    options.workers = static_cast<int>(numberOption(parser, workers, 1, 1));
    options.leaseMs = numberOption(parser, lease, 30, 1) * 1000;
    options.pollMs = numberOption(parser, poll, 1000, 1);
    options.attempts = static_cast<int>(numberOption(parser, attempts, 2, 1));
    options.once = parser.isSet(once);
    const bool json = parser.isSet(jsonOption());
    const QString vaultDir = parser.value(vaultOption());
    options.serverVault = VaultStore::isOnServer(locateVault(vaultDir));

    std::mutex printing;
    TaskHostService service(
        options, [vaultDir] { return openLocatedVault(vaultDir); },
        [vaultDir](int, QString &failure) -> std::unique_ptr<AddInSession> {
            QString quiet;
            QTextStream ignored(&quiet);
            return TaskHost::open(openLocatedVault(vaultDir), ignored, failure);
        },
        [&](const HostEvent &event) {
            const std::lock_guard<std::mutex> lock(printing);
            if (json)
                context.out << QJsonDocument(eventJson(event)).toJson(QJsonDocument::Compact) << '\n';
            else
                context.out << eventLine(event) << '\n';
            context.out.flush();
        });
    TerminationSignals termination;
    const auto waitForSignal = [&termination](int timeoutMs) { return termination.wait(timeoutMs); };
    // The add-in is loaded (and registered when it is not) once here, so
    // that the workers only load it; a server that is away is waited for.
    QString error;
    bool loaded = false;
    const auto load = [&] { loaded = TaskHost::open(openLocatedVault(vaultDir), context.err, error) != nullptr; };
    if (!service.awaitVault(load, waitForSignal))
        return 0;
    if (!loaded) {
        context.err << "mctask: " << error << '\n';
        return 1;
    }
    const int status = service.serve(waitForSignal);
    for (const QString &failure : service.failures())
        context.err << "mctask: host serve: " << failure << '\n';
    return status;
}

int runStatus(CommandContext &context)
{
    QCommandLineParser parser;
    parser.addOptions({vaultOption(), jsonOption()});
    if (!parseCommandLine(parser, context, QStringLiteral("host status [--vault DIR] [--json]"),
                          QStringLiteral("Lists the task hosts with their last heartbeat and what each worker runs.")))
        return 0;
    if (!parser.positionalArguments().isEmpty())
        throw CliError(QStringLiteral("host status: no arguments expected (see --help)"));
    TaskQueue queue(openLocatedVault(parser.value(vaultOption())));
    QJsonArray array;
    std::vector<QStringList> rows;
    for (const HostRow &host : queue.hosts()) {
        QJsonArray workerList;
        for (int worker = 1; worker <= host.workers; ++worker) {
            const auto running = std::find_if(host.running.begin(), host.running.end(),
                                              [worker](const InstanceRow &row) { return row.holderWorker == worker; });
            QJsonObject entry{{QStringLiteral("worker"), worker}};
            QString runs = QStringLiteral("idle");
            if (running != host.running.end()) {
                entry.insert(QStringLiteral("instance"), running->id);
                entry.insert(QStringLiteral("status"), running->status);
                entry.insert(QStringLiteral("progress"), running->progressPos);
                entry.insert(QStringLiteral("progressMax"), running->progressMax);
                runs = QStringLiteral("instance %1 (%2, %3/%4)")
                           .arg(running->id)
                           .arg(taskStatusText(running->status))
                           .arg(running->progressPos)
                           .arg(running->progressMax);
            }
            workerList.append(entry);
            rows.push_back({worker == 1 ? host.name : QString(), worker == 1 ? QString::number(host.pid) : QString(),
                            worker == 1 ? host.heartbeat : QString(),
                            worker == 1 ? (host.stopped.isEmpty() ? QStringLiteral("serving") : QStringLiteral("stopped"))
                                        : QString(),
                            QString::number(worker), host.stopped.isEmpty() ? runs : QString()});
        }
        array.append(QJsonObject{{QStringLiteral("name"), host.name},
                                 {QStringLiteral("pid"), host.pid},
                                 {QStringLiteral("started"), host.started},
                                 {QStringLiteral("heartbeat"), host.heartbeat},
                                 {QStringLiteral("stopped"), host.stopped},
                                 {QStringLiteral("workers"), workerList}});
    }
    if (parser.isSet(jsonOption()))
        printJson(context.out, array);
    else
        printTable(context.out, {"HOST", "PID", "HEARTBEAT", "STATE", "WORKER", "RUNS"}, rows);
    return 0;
}

} // namespace

int runHostServeCommand(CommandContext &context) { return runServe(context); }
int runHostStatusCommand(CommandContext &context) { return runStatus(context); }
