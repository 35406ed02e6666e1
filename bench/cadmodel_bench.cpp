#include "base/codepage.h"
#include "cadsim/engine/interpreter.h"
#include "cadsim/engine/parser.h"
#include "cadsim/model/cadapplication.h"
#include "cadsim/model/cadconstants.h"
#include "cadsim/model/scriptadapters.h"
#include "macro/testing/templatefill.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

PathResolver resolverFor(const QTemporaryDir &scratch)
{
    return makeDriveResolver({{QChar('S'), QStringLiteral(MCTASK_SAMPLES_DIR)}, {QChar('C'), scratch.path()}});
}

// Open the three-sheet drawing, export each sheet to PDF, close it.
void BM_OpenExportCloseDrawing(benchmark::State &state)
{
    QTemporaryDir scratch;
    CadApplication app(resolverFor(scratch));
    for (auto _ : state) {
        auto openRequest = app.getOpenDocSpec(QStringLiteral("S:\\layout.mcddrw"));
        ModelDocPtr doc = app.openDoc7(*openRequest);
        std::shared_ptr<ExportPdfData> data = app.exportFileData(cad::mcExportPdfData);
        int i = 0;
        for (const QString &sheet : doc->sheetNames()) {
            data->setSheets(cad::mcExportData_ExportSpecifiedSheets, {sheet});
            std::int32_t errors = 0, warnings = 0;
            doc->extension().saveAs(QStringLiteral("C:\\layout_%1.pdf").arg(i++), 0, 1, data.get(), errors, warnings);
        }
        app.closeDoc(doc->title());
    }
}
BENCHMARK(BM_OpenExportCloseDrawing)->Unit(benchmark::kMicrosecond);

// One export of the machined bracket per iteration: the solid built and
// written by the geometry kernel. PDF, drawn by Qt without a solid, is the
// floor of the same run.
void BM_ExportBracket(benchmark::State &state)
{
    static const char *const formats[] = {"pdf", "step", "igs", "stl", "stl", "wrl", "x_t"};
    const QString format = QLatin1String(formats[state.range(0)]);
    QTemporaryDir scratch;
    CadApplication app(resolverFor(scratch));
    app.preferences().setToggle(cad::mcIGESExportSolidAndSurface, true);
    app.preferences().setToggle(cad::mcSTLBinaryFormat, true);
    app.preferences().setInteger(cad::mcSTLQuality, state.range(0) == 4 ? 2 : 1);
    auto openRequest = app.getOpenDocSpec(QStringLiteral("S:\\bracket.mcdprt"));
    ModelDocPtr doc = app.openDoc7(*openRequest);
    for (auto _ : state) {
        std::int32_t errors = 0, warnings = 0;
        if (!doc->extension().saveAs(QStringLiteral("C:\\bracket.") + format, 0, 1, nullptr, errors, warnings))
            state.SkipWithError("export failed");
    }
    state.SetLabel((format + (state.range(0) == 3 ? " coarse" : state.range(0) == 4 ? " fine" : "")).toStdString());
}
BENCHMARK(BM_ExportBracket)->DenseRange(0, 6)->Unit(benchmark::kMicrosecond);

// The conversion template, filled in for the drawing (one PDF per sheet),
// parsed and run against the model: the stand-in's work for one file.
void BM_ConversionTemplateOneDrawing(benchmark::State &state)
{
    QTemporaryDir scratch;
    QDir(scratch.path()).mkpath(QStringLiteral("Vault"));
    QFile f(QStringLiteral(MCTASK_TEMPLATES_DIR "/convert.mcb"));
    if (!f.open(QIODevice::ReadOnly)) {
        state.SkipWithError("conversion template not found");
        return;
    }
    TemplateOptions options = conversionOptions(QStringLiteral("Adobe Portable Document Format (*.pdf)"), 2, 4);
    options["ErrorLogPath"] = Variant::fromBStr("Logs");
    const QString filled =
        fillTemplate(decodeWindows1252(f.readAll()), options, QStringLiteral("S:\\layout.mcddrw"));

    auto model = std::make_shared<CadApplication>(resolverFor(scratch));
    cadsim::EngineHost host;
    host.resolvePath = resolverFor(scratch);
    host.constants = cadsim::cadConstantValues();
    host.globals.insert(QStringLiteral("application"),
                        cadsim::ScriptValue::fromObject(std::make_shared<cadsim::ScriptMacroHost>(
                            cadsim::ScriptCadApplication::create(model))));
    for (auto _ : state) {
        try {
            std::unique_ptr<cadsim::Module> module = cadsim::Parser::parse(filled);
            cadsim::Interpreter interpreter(*module, host);
            interpreter.initialize();
            interpreter.call(QStringLiteral("main"));
        } catch (...) {
            state.SkipWithError("the template did not run");
            return;
        }
    }
    if (!QFile::exists(scratch.filePath("Out/layout_2.pdf")))
        state.SkipWithError("no output written");
}
BENCHMARK(BM_ConversionTemplateOneDrawing)->Unit(benchmark::kMicrosecond);

} // namespace
