#include "cadsim/model/cadconstants.h"

namespace cad {

#define MC_CONSTANT(n) NamedConstant{#n, n}

const std::vector<NamedConstant> &constantTable()
{
    static const std::vector<NamedConstant> table = {
        MC_CONSTANT(mcDocNONE),
        MC_CONSTANT(mcDocPART),
        MC_CONSTANT(mcDocASSEMBLY),
        MC_CONSTANT(mcDocDRAWING),
        MC_CONSTANT(mcGenericError),
        MC_CONSTANT(mcFileNotFoundError),
        MC_CONSTANT(mcInvalidFileTypeError),
        MC_CONSTANT(mcFutureVersion),
        MC_CONSTANT(mcGenericSaveError),
        MC_CONSTANT(mcFileNameEmpty),
        MC_CONSTANT(mcFileSaveAsBadExtension),
        MC_CONSTANT(mcFileSaveAsNotSupported),
        MC_CONSTANT(mcFileSaveWarning_MissingOLEObjects),
        MC_CONSTANT(mcSaveAsCurrentVersion),
        MC_CONSTANT(mcSaveAsOptions_Silent),
        MC_CONSTANT(mcSaveAsOptions_Copy),
        MC_CONSTANT(mcExportPdfData),
        MC_CONSTANT(mcExportData_ExportAllSheets),
        MC_CONSTANT(mcExportData_ExportCurrentSheet),
        MC_CONSTANT(mcExportData_ExportSpecifiedSheets),
        MC_CONSTANT(mcPageSetupInUse_Application),
        MC_CONSTANT(mcPageSetupInUse_Document),
        MC_CONSTANT(mcPageSetupInUse_DrawingSheet),
        MC_CONSTANT(mcPageSetupOrient_Portrait),
        MC_CONSTANT(mcPageSetupOrient_Landscape),
        MC_CONSTANT(mcGlimpseSaveAll),
        MC_CONSTANT(mcGlimpseSaveActive),
        MC_CONSTANT(mcGlimpseSaveSelected),
        MC_CONSTANT(mcPDFExportInColor),
        MC_CONSTANT(mcPDFExportEmbedFonts),
        MC_CONSTANT(mcPDFExportHighQuality),
        MC_CONSTANT(mcPDFExportPrintHeaderFooter),
        MC_CONSTANT(mcPDFExportUseCurrentPrintLineWeights),
        MC_CONSTANT(mcIGESExportSolidAndSurface),
        MC_CONSTANT(mcIGESExportAsWireframe),
        MC_CONSTANT(mcIGESExportFreeCurves),
        MC_CONSTANT(mcIGESExportSketchEntities),
        MC_CONSTANT(mcIGESHighTrimCurveAccuracy),
        MC_CONSTANT(mcIGESComponentsIntoOneFile),
        MC_CONSTANT(mcIGESFlattenAssemHierarchy),
        MC_CONSTANT(mcXTAssemSaveFormat),
        MC_CONSTANT(mcExportVrmlAllComponentsInSingleFile),
        MC_CONSTANT(mcSTLBinaryFormat),
        MC_CONSTANT(mcSTLDontTranslateToPositive),
        MC_CONSTANT(mcSTLComponentsIntoOneFile),
        MC_CONSTANT(mcSTLCheckForInterference),
        MC_CONSTANT(mcGlimpseOkayToMeasure),
        MC_CONSTANT(mcGlimpseExportSTLOkay),
        MC_CONSTANT(mcGlimpseSaveShadedDataInDrawings),
        MC_CONSTANT(mcGlimpseSaveBOM),
        MC_CONSTANT(mcGlimpseSaveAnimationOkay),
        MC_CONSTANT(mcGlimpseSaveAnimationToAllConfigs),
        MC_CONSTANT(mcGlimpseSaveAnimationRecalculate),
        MC_CONSTANT(mcPageSetupPrinterUsePrinterMargin),
        MC_CONSTANT(mcIGESRepresentation),
        MC_CONSTANT(mcIGESCurveRepresentation),
        MC_CONSTANT(mcIGESSystem),
        MC_CONSTANT(mcAcisOutputGeometryPreference),
        MC_CONSTANT(mcOutputVersion),
        MC_CONSTANT(mcAcisOutputUnits),
        MC_CONSTANT(mcStepAP),
        MC_CONSTANT(mcParasolidOutputVersion),
        MC_CONSTANT(mcExportVrmlUnits),
        MC_CONSTANT(mcExportStlUnits),
        MC_CONSTANT(mcSTLQuality),
        MC_CONSTANT(mcTiffImageType),
        MC_CONSTANT(mcTiffCompressionScheme),
        MC_CONSTANT(mcGlimpseSaveAsSelectionOption),
        MC_CONSTANT(mcPageSetupPrinterTopMargin),
        MC_CONSTANT(mcPageSetupPrinterBottomMargin),
        MC_CONSTANT(mcPageSetupPrinterLeftMargin),
        MC_CONSTANT(mcPageSetupPrinterRightMargin),
        MC_CONSTANT(mcGlimpseModelSelectionList),
    };
    return table;
}

bool findConstant(const QString &name, std::int32_t &value)
{
    for (const NamedConstant &c : constantTable()) {
        if (name.compare(QLatin1String(c.name), Qt::CaseInsensitive) == 0) {
            value = c.value;
            return true;
        }
    }
    return false;
}

#define MC_PREF(n, kind, ...) ExportPreference{#n, n, PreferenceKind::kind, QStringList{__VA_ARGS__}}

const std::vector<ExportPreference> &exportPreferences()
{
    static const std::vector<ExportPreference> prefs = {
        MC_PREF(mcPDFExportInColor, Toggle, "pdf"),
        MC_PREF(mcPDFExportEmbedFonts, Toggle, "pdf"),
        MC_PREF(mcPDFExportHighQuality, Toggle, "pdf"),
        MC_PREF(mcPDFExportPrintHeaderFooter, Toggle, "pdf"),
        MC_PREF(mcPDFExportUseCurrentPrintLineWeights, Toggle, "pdf"),
        MC_PREF(mcIGESExportSolidAndSurface, Toggle, "igs", "iges"),
        MC_PREF(mcIGESRepresentation, Integer, "igs", "iges"),
        MC_PREF(mcIGESExportAsWireframe, Toggle, "igs", "iges"),
        MC_PREF(mcIGESCurveRepresentation, Integer, "igs", "iges"),
        MC_PREF(mcIGESSystem, Integer, "igs", "iges"),
        MC_PREF(mcIGESExportFreeCurves, Toggle, "igs", "iges"),
        MC_PREF(mcIGESExportSketchEntities, Toggle, "igs", "iges"),
        MC_PREF(mcIGESHighTrimCurveAccuracy, Toggle, "igs", "iges"),
        MC_PREF(mcIGESComponentsIntoOneFile, Toggle, "igs", "iges"),
        MC_PREF(mcIGESFlattenAssemHierarchy, Toggle, "igs", "iges"),
        MC_PREF(mcAcisOutputGeometryPreference, Integer, "sat", "step", "stp"),
        MC_PREF(mcOutputVersion, Integer, "sat"),
        MC_PREF(mcAcisOutputUnits, Integer, "sat"),
        MC_PREF(mcStepAP, Integer, "step", "stp"),
        MC_PREF(mcParasolidOutputVersion, Integer, "x_t", "x_b"),
        MC_PREF(mcXTAssemSaveFormat, Toggle, "x_t", "x_b"),
        MC_PREF(mcExportVrmlUnits, Integer, "wrl"),
        MC_PREF(mcExportVrmlAllComponentsInSingleFile, Toggle, "wrl"),
        MC_PREF(mcSTLBinaryFormat, Toggle, "stl"),
        MC_PREF(mcExportStlUnits, Integer, "stl"),
        MC_PREF(mcSTLQuality, Integer, "stl"),
        MC_PREF(mcSTLDontTranslateToPositive, Toggle, "stl"),
        MC_PREF(mcSTLComponentsIntoOneFile, Toggle, "stl"),
        MC_PREF(mcSTLCheckForInterference, Toggle, "stl"),
        MC_PREF(mcTiffImageType, Integer, "tif", "psd"),
        MC_PREF(mcTiffCompressionScheme, Integer, "tif", "psd"),
        MC_PREF(mcGlimpseOkayToMeasure, Toggle, "gprt", "gasm", "glmp"),
        MC_PREF(mcGlimpseExportSTLOkay, Toggle, "gprt", "gasm", "glmp"),
        MC_PREF(mcGlimpseSaveShadedDataInDrawings, Toggle, "gprt", "gasm", "glmp"),
        MC_PREF(mcGlimpseSaveBOM, Toggle, "gprt", "gasm", "glmp"),
        MC_PREF(mcGlimpseSaveAnimationOkay, Toggle, "gprt", "gasm", "glmp"),
        MC_PREF(mcGlimpseSaveAnimationToAllConfigs, Toggle, "gprt", "gasm", "glmp"),
        MC_PREF(mcGlimpseSaveAnimationRecalculate, Toggle, "gprt", "gasm", "glmp"),
        MC_PREF(mcGlimpseSaveAsSelectionOption, Integer, "gprt", "gasm", "glmp"),
        MC_PREF(mcGlimpseModelSelectionList, StringList, "gprt", "gasm", "glmp"),
    };
    return prefs;
}

} // namespace cad
