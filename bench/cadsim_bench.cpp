// Start of the stand-in: process start, registration in the object table,
// connection and the answer to the first call, with no delay configured.

#include "cadsim/server/mcsimprocess.h"


#include <benchmark/benchmark.h>

namespace {

void BM_StartToFirstAnswer(benchmark::State &state)
{
    for (auto _ : state) {
        McsimProcess sim(QStringLiteral(MCSIM_PROGRAM));
        AutomationClient client;
        if (!sim.start() || !sim.connectApplication(client)) {
            state.SkipWithError("mcsim did not start");
            return;
        }
        const AutomationReply reply = client.call("Application", "RevisionNumber");
        if (!reply.ok()) {
            state.SkipWithError("first call failed");
            return;
        }
        benchmark::DoNotOptimize(reply.value);
        state.PauseTiming(); // ending the process is not part of the start
        client.call("Application", "ExitApp");
        sim.waitForExit();
        state.ResumeTiming();
    }
}
BENCHMARK(BM_StartToFirstAnswer)->Unit(benchmark::kMillisecond)->Iterations(30);

void BM_CallRoundTrip(benchmark::State &state)
{
    McsimProcess sim(QStringLiteral(MCSIM_PROGRAM));
    AutomationClient client;
    if (!sim.start() || !sim.connectApplication(client)) {
        state.SkipWithError("mcsim did not start");
        return;
    }
    for (auto _ : state) {
        const AutomationReply reply =
            client.call("Application", "GetUserPreferenceToggle", {Variant::fromI4(290)});
        benchmark::DoNotOptimize(reply.value);
    }
}
BENCHMARK(BM_CallRoundTrip)->Unit(benchmark::kMicrosecond);

} // namespace
