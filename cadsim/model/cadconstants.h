#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>
#include <vector>

// Constants of the stand-in's automation type library, as macros name them.
// The values are this stand-in's own; macros refer to them by name only,
// except the save error and warning bits, which the conversion macro also
// spells out as literals (256, 4096, 512).
namespace cad {

// Document types.
inline constexpr std::int32_t mcDocNONE = 0;
inline constexpr std::int32_t mcDocPART = 1;
inline constexpr std::int32_t mcDocASSEMBLY = 2;
inline constexpr std::int32_t mcDocDRAWING = 3;

// Open and load errors (bits).
inline constexpr std::int32_t mcGenericError = 1;
inline constexpr std::int32_t mcFileNotFoundError = 2;
inline constexpr std::int32_t mcInvalidFileTypeError = 1024;
inline constexpr std::int32_t mcFutureVersion = 8192;

// Save errors and warnings (bits).
inline constexpr std::int32_t mcGenericSaveError = 1;
inline constexpr std::int32_t mcFileNameEmpty = 4;
inline constexpr std::int32_t mcFileSaveAsBadExtension = 256;
inline constexpr std::int32_t mcFileSaveAsNotSupported = 4096;
inline constexpr std::int32_t mcFileSaveWarning_MissingOLEObjects = 512;

// Save-as version and options.
inline constexpr std::int32_t mcSaveAsCurrentVersion = 0;
inline constexpr std::int32_t mcSaveAsOptions_Silent = 1;
inline constexpr std::int32_t mcSaveAsOptions_Copy = 2;

// Export data.
inline constexpr std::int32_t mcExportPdfData = 1;
inline constexpr std::int32_t mcExportData_ExportAllSheets = 1;
inline constexpr std::int32_t mcExportData_ExportCurrentSheet = 2;
inline constexpr std::int32_t mcExportData_ExportSpecifiedSheets = 3;

// Page set-up in use.
inline constexpr std::int32_t mcPageSetupInUse_Application = 0;
inline constexpr std::int32_t mcPageSetupInUse_Document = 1;
inline constexpr std::int32_t mcPageSetupInUse_DrawingSheet = 2;

// Page orientation.
inline constexpr std::int32_t mcPageSetupOrient_Portrait = 1;
inline constexpr std::int32_t mcPageSetupOrient_Landscape = 2;

// Viewer-format selection option values.
inline constexpr std::int32_t mcGlimpseSaveAll = 0;
inline constexpr std::int32_t mcGlimpseSaveActive = 1;
inline constexpr std::int32_t mcGlimpseSaveSelected = 2;

// User preference identifiers. Each kind has its own number range so that a
// description of the preferences in effect can tell them apart; numbers
// below 1000 are left to the application's own settings.
inline constexpr std::int32_t mcPDFExportInColor = 1001;
inline constexpr std::int32_t mcPDFExportEmbedFonts = 1002;
inline constexpr std::int32_t mcPDFExportHighQuality = 1003;
inline constexpr std::int32_t mcPDFExportPrintHeaderFooter = 1004;
inline constexpr std::int32_t mcPDFExportUseCurrentPrintLineWeights = 1005;
inline constexpr std::int32_t mcIGESExportSolidAndSurface = 1010;
inline constexpr std::int32_t mcIGESExportAsWireframe = 1011;
inline constexpr std::int32_t mcIGESExportFreeCurves = 1012;
inline constexpr std::int32_t mcIGESExportSketchEntities = 1013;
inline constexpr std::int32_t mcIGESHighTrimCurveAccuracy = 1014;
inline constexpr std::int32_t mcIGESComponentsIntoOneFile = 1015;
inline constexpr std::int32_t mcIGESFlattenAssemHierarchy = 1016;
inline constexpr std::int32_t mcXTAssemSaveFormat = 1020;
inline constexpr std::int32_t mcExportVrmlAllComponentsInSingleFile = 1025;
inline constexpr std::int32_t mcSTLBinaryFormat = 1030;
inline constexpr std::int32_t mcSTLDontTranslateToPositive = 1031;
inline constexpr std::int32_t mcSTLComponentsIntoOneFile = 1032;
inline constexpr std::int32_t mcSTLCheckForInterference = 1033;
inline constexpr std::int32_t mcGlimpseOkayToMeasure = 1040;
inline constexpr std::int32_t mcGlimpseExportSTLOkay = 1041;
inline constexpr std::int32_t mcGlimpseSaveShadedDataInDrawings = 1042;
inline constexpr std::int32_t mcGlimpseSaveBOM = 1043;
inline constexpr std::int32_t mcGlimpseSaveAnimationOkay = 1044;
inline constexpr std::int32_t mcGlimpseSaveAnimationToAllConfigs = 1045;
inline constexpr std::int32_t mcGlimpseSaveAnimationRecalculate = 1046;
inline constexpr std::int32_t mcPageSetupPrinterUsePrinterMargin = 1050;

inline constexpr std::int32_t mcIGESRepresentation = 2010;
inline constexpr std::int32_t mcIGESCurveRepresentation = 2011;
inline constexpr std::int32_t mcIGESSystem = 2012;
inline constexpr std::int32_t mcAcisOutputGeometryPreference = 2015;
inline constexpr std::int32_t mcOutputVersion = 2016;
inline constexpr std::int32_t mcAcisOutputUnits = 2017;
inline constexpr std::int32_t mcStepAP = 2018;
inline constexpr std::int32_t mcParasolidOutputVersion = 2020;
inline constexpr std::int32_t mcExportVrmlUnits = 2025;
inline constexpr std::int32_t mcExportStlUnits = 2030;
inline constexpr std::int32_t mcSTLQuality = 2031;
inline constexpr std::int32_t mcTiffImageType = 2035;
inline constexpr std::int32_t mcTiffCompressionScheme = 2036;
inline constexpr std::int32_t mcGlimpseSaveAsSelectionOption = 2040;

inline constexpr std::int32_t mcPageSetupPrinterTopMargin = 3050;
inline constexpr std::int32_t mcPageSetupPrinterBottomMargin = 3051;
inline constexpr std::int32_t mcPageSetupPrinterLeftMargin = 3052;
inline constexpr std::int32_t mcPageSetupPrinterRightMargin = 3053;

inline constexpr std::int32_t mcGlimpseModelSelectionList = 4040;

enum class PreferenceKind { Toggle, Integer, Double, StringList };

struct NamedConstant
{
    const char *name;
    std::int32_t value;
};

// Every constant above, by name, for the macro engine's constant table.
const std::vector<NamedConstant> &constantTable();

// Looks a constant up by name, case-insensitively as the macro language does.
bool findConstant(const QString &name, std::int32_t &value);

// An export preference: which kind it is and which target extensions
// (lower case, no dot) it shapes.
struct ExportPreference
{
    const char *name;
    std::int32_t id;
    PreferenceKind kind;
    QStringList extensions;
};

const std::vector<ExportPreference> &exportPreferences();

} // namespace cad
