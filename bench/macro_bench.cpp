#include "host/testing/faketask.h"
#include "host/testing/fakevault.h"
#include "macro/expanddelimited.h"
#include "macro/macrobuilder.h"
#include "macro/macroliteral.h"
#include "macro/templateloader.h"
#include "macro/testing/templatefill.h"

#include <benchmark/benchmark.h>

namespace {

const QString &conversionTemplate()
{
    static const QString text = loadScriptTemplate(ConversionTemplate, [](const QString &message) {
        qFatal("conversion template: %s", qPrintable(message));
    });
    return text;
}

// A task instance with every option key of the conversion template set, each
// with a value of the kind its set-up page writes.
std::shared_ptr<FakeTaskInstance> instanceWithAllOptions()
{
    TemplateOptions options = conversionOptions(QStringLiteral("Adobe Portable Document Format (*.pdf)"), 5, 5);
    for (const QString &flag : conversionFlagNames())
        options[flag] = Variant::fromBool(true);
    for (const QString &number : conversionNumberNames())
        options[number] = Variant::fromI4(5);
    options["OutputPath"] = Variant::fromBStr("<VaultPath>\\Output\\<Today>\\<Filename>-<Configuration>");
    options["OutputPath2"] = Variant::fromBStr("<Path>\\PDF\\<Filename>_<Revision>_<WorkflowState>");
    for (const char *name : {"NamedSheet", "NamedConf", "ErrorLogPath"})
        options[name] = Variant::fromBStr("Logs\\Sub");
    auto instance = std::make_shared<FakeTaskInstance>();
    for (const auto &[name, value] : options)
        instance->set(name, value);
    return instance;
}

std::int32_t style103(const QString &)
{
    return 103;
}

void BM_PrepareConversionTemplate(benchmark::State &state)
{
    const QString &script = conversionTemplate();
    auto vault = std::make_shared<FakeVault>("Design", "V:\\Design");
    auto instance = instanceWithAllOptions();
    for (auto _ : state) {
        MacroBuilder builder(style103);
        builder.Prepare(vault, instance, script);
        benchmark::DoNotOptimize(builder.macroText().size());
    }
    state.counters["template_chars"] = static_cast<double>(script.size());
}
BENCHMARK(BM_PrepareConversionTemplate)->Unit(benchmark::kMicrosecond);

// One file of a run: SetFile and BuildFileMacro. Arg 1: the output paths use
// the revision, so every file also asks the vault for its version.
void BM_BuildFileMacro(benchmark::State &state)
{
    const QString &script = conversionTemplate();
    auto vault = std::make_shared<FakeVault>("Design", "V:\\Design");
    auto instance = instanceWithAllOptions();
    if (state.range(0) == 0) {
        instance->set("OutputPath", Variant::fromBStr("<VaultPath>\\Output\\<Filename>"));
        instance->set("OutputPath2", Variant::fromBStr(""));
    }
    const QString path = QStringLiteral("V:\\Design\\Projects\\P-1042\\Gearbox housing \u0416-7.mcdasm");
    vault->addFile(1042, path, 17)->setVersion(4, "B", "Released");
    MacroBuilder builder(style103);
    builder.Prepare(vault, instance, script);
    for (auto _ : state) {
        builder.SetFile(path, "Default", 1042, 17, 4);
        const QString macro = builder.BuildFileMacro();
        benchmark::DoNotOptimize(macro.constData());
    }
}
BENCHMARK(BM_BuildFileMacro)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);

// Expansion time against text length, with a placeholder every ~40
// characters, half of them distinct: the fit shows the pass is linear.
void BM_ExpandDelimitedScaling(benchmark::State &state)
{
    const auto blocks = state.range(0);
    QString text;
    for (qint64 i = 0; i < blocks; ++i)
        text += QStringLiteral("    If x <> 0 Then y = [Name%1] ' comment\r\n").arg(i % (blocks / 2 + 1));
    const PlaceholderLookup lookup = [](const QString &name) -> std::optional<Variant> {
        return Variant::fromBStr(name + QStringLiteral("-value"));
    };
    for (auto _ : state) {
        const QString out = ExpandDelimited(text, QLatin1Char('['), QLatin1Char(']'), lookup);
        benchmark::DoNotOptimize(out.constData());
    }
    state.SetComplexityN(text.size());
}
BENCHMARK(BM_ExpandDelimitedScaling)->RangeMultiplier(4)->Range(64, 65536)->Complexity(benchmark::oN);

void BM_EncodeMacroLiteral(benchmark::State &state)
{
    QString path = QStringLiteral("V:\\Design\\");
    for (int i = 0; i < 8; ++i)
        path += QStringLiteral("\u041F\u0440\u043E\u0435\u043A\u0442 %1\\").arg(i);
    path += QStringLiteral("part.mcdprt");
    for (auto _ : state) {
        const QString out = EncodeMacroLiteral(path);
        benchmark::DoNotOptimize(out.constData());
    }
}
BENCHMARK(BM_EncodeMacroLiteral);

} // namespace
