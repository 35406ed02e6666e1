#include "macro/testing/templatefill.h"

#include "host/testing/faketask.h"
#include "host/testing/fakevault.h"
#include "macro/macrobuilder.h"

const QStringList &conversionFlagNames()
{
    static const QStringList names = {
        "PdfInColor", "PdfEmbedFonts", "PdfHighQuality", "PdfPrintHeaderFooter", "PdfUsePrinterLineWeights",
        "IgesExportSolidSurface", "IgesExportWireframe", "IgesExportFreeCurves", "IgesExportSketchEntities",
        "IgesHighCurveAccuracy", "IgesComponentsIntoOneFile", "IgesFlattenAssemblyHierarchy",
        "ParasolidFlattenHierarchy", "VrmlSaveAssemblyAsOneFile", "StlOutputAs", "StlDontTranslatePositive",
        "StlComponentsIntoOneFile", "StlCheckForInterferences", "GlmpOkayToMeasure", "GlmpAllowExportOfSTL",
        "GlmpSaveShadedData", "GlmpSaveBOM", "GlmpSaveMotionStudies", "GlmpSaveMotionStudiesToAllConfs",
        "GlmpRecalcMotionStudies"};
    return names;
}

const QStringList &conversionNumberNames()
{
    static const QStringList names = {
        "IgesRepresentation", "IgesCurveRepresentation", "IgesSystem", "AcisGeometry", "AcisVersion",
        "AcisOutputAsUnit", "StepGeometry", "StepVersion", "ParasolidVersion", "VrmlOutputAsUnit",
        "StlOutputAsUnit", "StlQuality", "TifImageType", "TifCompressionScheme"};
    return names;
}

TemplateOptions conversionOptions(const QString &format, int outputItems, int fileItems)
{
    TemplateOptions options = {
        {"OutputPath", Variant::fromBStr("C:\\Out\\<Filename>")},
        {"OutputPath2", Variant::fromBStr("")},
        {"FileFormat", Variant::fromBStr(format)},
        {"OutputSheets", Variant::fromI4(outputItems)},
        {"FileSheets", Variant::fromI4(fileItems)},
        {"OutputConfs", Variant::fromI4(outputItems)},
        {"FileConfs", Variant::fromI4(fileItems)},
        {"NamedSheet", Variant::fromBStr("")},
        {"NamedConf", Variant::fromBStr("")},
        {"ErrorLogPath", Variant::fromBStr("\\Logs\\Convert")},
    };
    for (const QString &flag : conversionFlagNames())
        options[flag] = Variant::fromBool(false);
    for (const QString &number : conversionNumberNames())
        options[number] = Variant::fromI4(0);
    return options;
}

QString fillTemplate(const QString &text, const TemplateOptions &options, const QString &file,
                     const QString &cfgOrSheet)
{
    auto vault = std::make_shared<FakeVault>(QStringLiteral("Vault"), kTemplateVaultRoot);
    auto instance = std::make_shared<FakeTaskInstance>();
    instance->guid = kTemplateInstanceGuid;
    for (const auto &[name, value] : options)
        instance->set(name, value);
    MacroBuilder builder([](const QString &) { return 0; });
    builder.Prepare(vault, instance, text);
    builder.SetFile(file, cfgOrSheet, 1, 1, 1);
    return builder.BuildFileMacro();
}
