#include "app/standinrun.h"

#include "platform/automation/automationclient.h"
#include "platform/automation/serverlauncher.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <set>

namespace {

constexpr int kStartLimitMs = 20000;
constexpr int kExitLimitMs = 5000;
constexpr int kPollMs = 20;
constexpr int kKilledExitCode = 255;
constexpr int kSaveEvent = 7;

// Follows documents as they open and records what they are about to save.
class SaveRecorder final : public AutomationEventSink
{
public:
    explicit SaveRecorder(AutomationClient &client) : m_client(client) {}

    void adviseApplication() { m_application = m_client.call("Application", "Advise").value.handle(); }

    HRESULT onEvent(const AutomationEvent &event) override
    {
        if (event.source == m_application) {
            const AutomationValue doc = m_client.call("Application", "ActiveDoc").value;
            if (!doc.isNothing() && m_advised.insert(doc.handle()).second)
                m_client.call(doc, "Advise");
        } else if (event.dispId == kSaveEvent && !event.args.empty()) {
            saved.append(event.args.at(0).toText());
        }
        return S_OK;
    }

    QStringList saved;

private:
    AutomationClient &m_client;
    ObjectHandle m_application = 0;
    std::set<ObjectHandle> m_advised;
};

} // namespace

QString defaultStandInProgram()
{
    const QString fromEnv = qEnvironmentVariable("MCTASK_MCSIM");
    if (!fromEnv.isEmpty())
        return fromEnv;
    const QDir bin(QCoreApplication::applicationDirPath());
    for (const QString &candidate : {bin.filePath(QStringLiteral("../cadsim/server/mcsim")),
                                     bin.filePath(QStringLiteral("mcsim"))}) {
        if (QFileInfo(candidate).isExecutable())
            return QFileInfo(candidate).canonicalFilePath();
    }
    return {};
}

StandInRunResult runMacroInStandIn(const QString &program, const QString &macroFile, int timeoutMs)
{
    StandInRunResult result;
    ServerLauncher launcher;
    Processes::StartRequest request;
    request.program = program;
    request.arguments = {QStringLiteral("/B")};
    request.show = ShowCommand::Minimized;
    const std::optional<qint64> pid = launcher.start(request);
    if (!pid) {
        result.failure = QStringLiteral("cannot start %1").arg(program);
        return result;
    }

    const QString moniker = Monikers::application(*pid);
    AutomationClient client;
    if (failed(launcher.connect(client, moniker, *pid, kStartLimitMs / kPollMs, kPollMs))) {
        result.failure = QStringLiteral("the stand-in did not register as %1").arg(moniker);
        launcher.terminate(*pid, kKilledExitCode);
        return result;
    }
    result.started = true;

    SaveRecorder recorder(client);
    client.setEventSink(&recorder);
    recorder.adviseApplication();
    const AutomationReply reply =
        client.call("Application", "RunMacro2",
                    {Variant::fromBStr(macroFile), Variant::fromBStr(QStringLiteral("McMacro1")),
                     Variant::fromBStr(QStringLiteral("main")), Variant::fromI4(0), Variant::fromI4(0)},
                    timeoutMs);
    if (reply.ok()) {
        result.ran = reply.value.toBool();
        result.errorCode = reply.out.size() > 4 ? reply.out.at(4).toI4() : 0;
    } else {
        result.failure = QStringLiteral("the run call failed with 0x%1")
                             .arg(static_cast<quint32>(reply.hr), 8, 16, QLatin1Char('0'));
    }
    result.savedFiles = recorder.saved;

    client.call("Application", "ExitApp", {}, kExitLimitMs);
    client.disconnect();
    if (!launcher.waitForExit(*pid, kExitLimitMs / kPollMs, kPollMs))
        launcher.terminate(*pid, kKilledExitCode);
    return result;
}
