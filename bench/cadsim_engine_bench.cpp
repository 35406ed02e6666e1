#include "base/codepage.h"
#include "cadsim/engine/macroengine.h"
#include "macro/testing/templatefill.h"

#ifdef MCTASK_BENCH_WITH_MODEL
#include "cadsim/model/cadapplication.h"
#include "cadsim/model/scriptadapters.h"
#include "base/windowspath.h"
#endif

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {

using namespace cadsim;

// The conversion template filled for one part, saved as PDF.
QString filledConvertTemplate()
{
    QFile f(QStringLiteral(MCTASK_TEMPLATES_DIR "/convert.mcb"));
    if (!f.open(QIODevice::ReadOnly))
        return QString();
    return fillTemplate(decodeWindows1252(f.readAll()),
                        conversionOptions(QStringLiteral("Adobe Portable Document Format (*.pdf)"), 2, 4),
                        QStringLiteral("S:\\bracket.mcdprt"));
}

void BM_CompileConvertTemplate(benchmark::State &state)
{
    const QString text = filledConvertTemplate();
    if (text.isEmpty()) {
        state.SkipWithError("template not found");
        return;
    }
    for (auto _ : state) {
        MacroEngine engine;
        const MacroResult r = engine.load(text);
        if (!r.ok) {
            state.SkipWithError(qPrintable(r.message));
            return;
        }
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_CompileConvertTemplate)->Unit(benchmark::kMicrosecond);

void BM_InterpretStringsAndArrays(benchmark::State &state)
{
    // 10,000 loop turns of the kind of work macros do: strings, Like, arrays, calls.
    const QString text = QStringLiteral(
        "Function PathAppend(ByVal path As String, ByVal more As String) As String\n"
        "    If Right(path, 1) <> \"\\\" Then path = path & \"\\\"\n"
        "    PathAppend = path & more\n"
        "End Function\n"
        "Sub main()\n"
        "    Dim i As Long, n As Long, s As String, parts\n"
        "    For i = 1 To 10000\n"
        "        s = PathAppend(\"C:\\Out\", \"Sheet\" & i & \".pdf\")\n"
        "        If LCase(s) Like \"*sheet#*.pdf\" Then n = n + 1\n"
        "        parts = Split(s, \"\\\")\n"
        "        n = n + UBound(parts)\n"
        "    Next\n"
        "End Sub\n");
    MacroEngine engine;
    if (!engine.load(text).ok) {
        state.SkipWithError("compile failed");
        return;
    }
    for (auto _ : state) {
        const MacroResult r = engine.run(QStringLiteral("McMacro1"), QStringLiteral("main"));
        if (!r.ok) {
            state.SkipWithError(qPrintable(r.message));
            return;
        }
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}
BENCHMARK(BM_InterpretStringsAndArrays)->Unit(benchmark::kMillisecond);

#ifdef MCTASK_BENCH_WITH_MODEL
void BM_RunConvertTemplatePerFile(benchmark::State &state)
{
    const QString text = filledConvertTemplate();
    QTemporaryDir scratch;
    const PathResolver resolver =
        makeDriveResolver({{QChar('S'), QStringLiteral(MCTASK_SAMPLES_DIR)}, {QChar('C'), scratch.path()}});
    auto model = std::make_shared<CadApplication>(resolver);
    EngineHost host;
    host.resolvePath = resolver;
    host.globals.insert(QStringLiteral("application"),
                        ScriptValue::fromObject(std::make_shared<ScriptMacroHost>(ScriptCadApplication::create(model))));
    MacroEngine engine(host);
    const MacroResult loaded = engine.load(text);
    if (!loaded.ok) {
        state.SkipWithError(qPrintable(loaded.message));
        return;
    }
    for (auto _ : state) {
        const MacroResult r = engine.run(QStringLiteral("McMacro1"), QStringLiteral("main"));
        if (!r.ok) {
            state.SkipWithError(qPrintable(QStringLiteral("line %1: %2").arg(r.line).arg(r.message)));
            return;
        }
    }
    // The run must have done the work: the PDF lies in the output folder, no error was logged.
    const QStringList outputs = QDir(scratch.filePath(QStringLiteral("Out"))).entryList(QDir::Files);
    state.counters["outputs"] = static_cast<double>(outputs.size());
    state.counters["log_files"] = static_cast<double>(QDir(scratch.filePath(QStringLiteral("Vault/Logs/Convert"))).entryList(QDir::Files).size());
}
BENCHMARK(BM_RunConvertTemplatePerFile)->Unit(benchmark::kMillisecond);
#endif

} // namespace

