// McManager against the stand-in: a restart (Close plus Start) and one
// RunMacro of a trivial macro, each to be read against a bare automation
// call round trip on the same kind of process.

#include "cad/mcmanager.h"
#include "cadsim/server/installation.h"
#include "host/hosterror.h"
#include "platform/memoryregistrystore.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

// A private home with the stand-in installed, and a started connection.
class Session
{
public:
    Session()
    {
        qputenv("MCTASK_HOME", QFile::encodeName(m_home.path()));
        StandInInstallation installation;
        installation.folder = m_home.filePath(QStringLiteral("Mecadra 2013"));
        QString error;
        m_ok = installation.install(QStringLiteral(MCSIM_PROGRAM), error, m_store);
        m_manager = std::make_unique<McManager>(std::make_shared<LaunchedMecadraProcesses>(), m_store);
        // Polls as fast as a local stand-in needs; the product's one-second
        // polls would measure the sleeps, not the work.
        m_manager->setTiming({2, 5000, 2500, 2500, 1000, 1800});
        m_manager->Init(nullptr, 3, nullptr, 2013);
        m_ok = m_ok && m_manager->Start() == S_OK;
    }
    ~Session() { m_manager->Close(true, S_OK); }

    bool ok() const { return m_ok; }
    McManager &manager() { return *m_manager; }

private:
    QTemporaryDir m_home;
    MemoryRegistryStore m_store;
    std::unique_ptr<McManager> m_manager;
    bool m_ok = false;
};

void BM_BareCallRoundTrip(benchmark::State &state)
{
    Session session;
    if (!session.ok()) {
        state.SkipWithError("the stand-in did not start");
        return;
    }
    McAutomation &app = *session.manager().automation();
    for (auto _ : state) {
        const AutomationReply reply = app.call("Application", "GetUserPreferenceToggle", {Variant::fromI4(290)});
        benchmark::DoNotOptimize(reply.value);
    }
}
BENCHMARK(BM_BareCallRoundTrip)->Unit(benchmark::kMicrosecond);

// The run call alone on a macro file written once: what the stand-in itself
// needs for a trivial macro.
void BM_BareRunCall(benchmark::State &state)
{
    Session session;
    if (!session.ok()) {
        state.SkipWithError("the stand-in did not start");
        return;
    }
    QTemporaryDir dir;
    const QString macroFile = dir.filePath(QStringLiteral("trivial.mcb"));
    QFile file(macroFile);
    if (!file.open(QIODevice::WriteOnly) || file.write("Sub main()\r\nEnd Sub\r\n") < 0) {
        state.SkipWithError("cannot write the macro");
        return;
    }
    file.close();
    McAutomation &app = *session.manager().automation();
    for (auto _ : state) {
        const AutomationReply reply =
            app.call("Application", "RunMacro2",
                     {Variant::fromBStr(macroFile), Variant::fromBStr(QStringLiteral("McMacro1")),
                      Variant::fromBStr(QStringLiteral("main")), Variant::fromI4(0), Variant::fromI4(0)});
        benchmark::DoNotOptimize(reply.value);
    }
}
BENCHMARK(BM_BareRunCall)->Unit(benchmark::kMicrosecond);

void BM_Restart(benchmark::State &state)
{
    Session session;
    if (!session.ok()) {
        state.SkipWithError("the stand-in did not start");
        return;
    }
    for (auto _ : state) {
        if (failed(session.manager().Close(true, S_OK)) || failed(session.manager().Start())) {
            state.SkipWithError("restart failed");
            return;
        }
    }
}
BENCHMARK(BM_Restart)->Unit(benchmark::kMillisecond)->Iterations(30);

void BM_RunTrivialMacro(benchmark::State &state)
{
    Session session;
    if (!session.ok()) {
        state.SkipWithError("the stand-in did not start");
        return;
    }
    const QString macro = QStringLiteral("Sub main()\r\nEnd Sub\r\n");
    for (auto _ : state) {
        try {
            session.manager().RunMacro(macro);
        } catch (const HostError &) {
            state.SkipWithError("the macro failed");
            return;
        }
    }
}
BENCHMARK(BM_RunTrivialMacro)->Unit(benchmark::kMicrosecond);

} // namespace
