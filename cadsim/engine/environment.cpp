#include "cadsim/engine/environment.h"

namespace cadsim {

namespace {

QHash<QString, ScriptValue> lowerKeys(std::initializer_list<std::pair<const char *, int>> items)
{
    QHash<QString, ScriptValue> table;
    for (const auto &[name, value] : items)
        table.insert(QString::fromLatin1(name).toLower(), ScriptValue::fromLong(value));
    return table;
}

} // namespace

const QHash<QString, ScriptValue> &defaultCadConstants()
{
    // The numbers are this application's own; macros use the names.
    static const QHash<QString, ScriptValue> table = lowerKeys({
        {"mcDocNONE", 0}, {"mcDocPART", 1}, {"mcDocASSEMBLY", 2}, {"mcDocDRAWING", 3},
        {"mcFutureVersion", 8192}, {"mcFileNotFoundError", 2}, {"mcGenericError", 1},
        {"mcSaveAsCurrentVersion", 0}, {"mcSaveAsOptions_Silent", 1}, {"mcSaveAsOptions_Copy", 2},
        {"mcOpenDocOptions_Silent", 1}, {"mcOpenDocOptions_ReadOnly", 2},
        {"mcExportPdfData", 1}, {"mcExportData_ExportAllSheets", 1}, {"mcExportData_ExportCurrentSheet", 2},
        {"mcExportData_ExportSpecifiedSheets", 3},
        {"mcPDFExportInColor", 101}, {"mcPDFExportEmbedFonts", 102}, {"mcPDFExportHighQuality", 103},
        {"mcPDFExportPrintHeaderFooter", 104}, {"mcPDFExportUseCurrentPrintLineWeights", 105},
        {"mcIGESExportSolidAndSurface", 201}, {"mcIGESRepresentation", 202}, {"mcIGESExportAsWireframe", 203},
        {"mcIGESCurveRepresentation", 204}, {"mcIGESSystem", 205}, {"mcIGESExportFreeCurves", 206},
        {"mcIGESExportSketchEntities", 207}, {"mcIGESHighTrimCurveAccuracy", 208},
        {"mcIGESComponentsIntoOneFile", 209}, {"mcIGESFlattenAssemHierarchy", 210},
        {"mcAcisOutputGeometryPreference", 301}, {"mcOutputVersion", 302}, {"mcAcisOutputUnits", 303},
        {"mcStepAP", 401},
        {"mcParasolidOutputVersion", 501}, {"mcXTAssemSaveFormat", 502},
        {"mcExportVrmlUnits", 601}, {"mcExportVrmlAllComponentsInSingleFile", 602},
        {"mcSTLBinaryFormat", 701}, {"mcExportStlUnits", 702}, {"mcSTLQuality", 703},
        {"mcSTLDontTranslateToPositive", 704}, {"mcSTLComponentsIntoOneFile", 705},
        {"mcSTLCheckForInterference", 706},
        {"mcTiffImageType", 801}, {"mcTiffCompressionScheme", 802},
        {"mcGlimpseOkayToMeasure", 901}, {"mcGlimpseExportSTLOkay", 902},
        {"mcGlimpseSaveShadedDataInDrawings", 903}, {"mcGlimpseSaveBOM", 904},
        {"mcGlimpseSaveAnimationOkay", 905}, {"mcGlimpseSaveAnimationToAllConfigs", 906},
        {"mcGlimpseSaveAnimationRecalculate", 907}, {"mcGlimpseSaveAsSelectionOption", 908},
        {"mcGlimpseModelSelectionList", 909},
        {"mcGlimpseSaveAll", 0}, {"mcGlimpseSaveActive", 1}, {"mcGlimpseSaveSelected", 2},
        {"mcPageSetupPrinterUsePrinterMargin", 1001}, {"mcPageSetupPrinterTopMargin", 1002},
        {"mcPageSetupPrinterBottomMargin", 1003}, {"mcPageSetupPrinterLeftMargin", 1004},
        {"mcPageSetupPrinterRightMargin", 1005},
        {"mcPageSetupInUse_Application", 0}, {"mcPageSetupInUse_Document", 1},
        {"mcPageSetupInUse_DrawingSheet", 2},
        {"mcPageSetupOrientation_Portrait", 1}, {"mcPageSetupOrientation_Landscape", 2},
    });
    return table;
}

const QHash<QString, ScriptValue> &vbaConstants()
{
    static const QHash<QString, ScriptValue> table = [] {
        QHash<QString, ScriptValue> t = lowerKeys({
            {"vbOKOnly", 0}, {"vbOKCancel", 1}, {"vbAbortRetryIgnore", 2}, {"vbYesNoCancel", 3},
            {"vbYesNo", 4}, {"vbRetryCancel", 5}, {"vbCritical", 16}, {"vbQuestion", 32},
            {"vbExclamation", 48}, {"vbInformation", 64}, {"vbDefaultButton1", 0}, {"vbDefaultButton2", 256},
            {"vbDefaultButton3", 512}, {"vbSystemModal", 4096}, {"vbApplicationModal", 0},
            {"vbOK", 1}, {"vbCancel", 2}, {"vbAbort", 3}, {"vbRetry", 4}, {"vbIgnore", 5}, {"vbYes", 6}, {"vbNo", 7},
            {"vbBinaryCompare", 0}, {"vbTextCompare", 1}, {"vbUseCompareOption", -1},
            {"vbEmpty", 0}, {"vbNull", 1}, {"vbInteger", 2}, {"vbLong", 3}, {"vbSingle", 4}, {"vbDouble", 5},
            {"vbCurrency", 6}, {"vbDate", 7}, {"vbString", 8}, {"vbObject", 9}, {"vbError", 10},
            {"vbBoolean", 11}, {"vbVariant", 12}, {"vbByte", 17}, {"vbArray", 8192},
            {"vbNormal", 0}, {"vbReadOnly", 1}, {"vbHidden", 2}, {"vbSystem", 4}, {"vbDirectory", 16},
            {"vbArchive", 32}, {"vbObjectError", static_cast<int>(0x80040000u)},
            {"vbUseDefault", -2}, {"vbTrue", -1}, {"vbFalse", 0},
            {"vbDecimal", 14}, {"vbUserDefinedType", 36}, {"vbLongLong", 20}, {"vbDataObject", 13},
            {"vbUpperCase", 1}, {"vbLowerCase", 2}, {"vbProperCase", 3}, {"vbUnicode", 64}, {"vbFromUnicode", 128},
            {"vbUseSystemDayOfWeek", 0}, {"vbSunday", 1}, {"vbMonday", 2}, {"vbTuesday", 3}, {"vbWednesday", 4},
            {"vbThursday", 5}, {"vbFriday", 6}, {"vbSaturday", 7},
            {"vbUseSystem", 0}, {"vbFirstJan1", 1}, {"vbFirstFourDays", 2}, {"vbFirstFullWeek", 3},
            {"vbMethod", 1}, {"vbGet", 2}, {"vbLet", 4}, {"vbSet", 8},
            {"vbDefaultButton4", 768}, {"vbMsgBoxHelpButton", 16384}, {"vbMsgBoxSetForeground", 65536},
            {"vbMsgBoxRight", 524288}, {"vbMsgBoxRtlReading", 1048576},
            {"vbDatabaseCompare", 2},
            {"vbGeneralDate", 0}, {"vbLongDate", 1}, {"vbShortDate", 2}, {"vbLongTime", 3}, {"vbShortTime", 4},
            {"vbBlack", 0x000000}, {"vbRed", 0x0000FF}, {"vbGreen", 0x00FF00}, {"vbYellow", 0x00FFFF},
            {"vbBlue", 0xFF0000}, {"vbMagenta", 0xFF00FF}, {"vbCyan", 0xFFFF00}, {"vbWhite", 0xFFFFFF},
            {"vbVolume", 8}, {"vbAlias", 64},
            {"vbWide", 4}, {"vbNarrow", 8}, {"vbKatakana", 16}, {"vbHiragana", 32},
            {"vbHide", 0}, {"vbNormalFocus", 1}, {"vbMinimizedFocus", 2}, {"vbMaximizedFocus", 3},
            {"vbNormalNoFocus", 4}, {"vbMinimizedNoFocus", 6},
            {"vbCalGreg", 0}, {"vbCalHijri", 1},
            {"vbKeyLButton", 1}, {"vbKeyRButton", 2}, {"vbKeyCancel", 3}, {"vbKeyMButton", 4},
            {"vbKeyBack", 8}, {"vbKeyTab", 9}, {"vbKeyClear", 12}, {"vbKeyReturn", 13}, {"vbKeyShift", 16},
            {"vbKeyControl", 17}, {"vbKeyMenu", 18}, {"vbKeyPause", 19}, {"vbKeyCapital", 20},
            {"vbKeyEscape", 27}, {"vbKeySpace", 32}, {"vbKeyPageUp", 33}, {"vbKeyPageDown", 34},
            {"vbKeyEnd", 35}, {"vbKeyHome", 36}, {"vbKeyLeft", 37}, {"vbKeyUp", 38}, {"vbKeyRight", 39},
            {"vbKeyDown", 40}, {"vbKeySelect", 41}, {"vbKeyPrint", 42}, {"vbKeyExecute", 43},
            {"vbKeySnapshot", 44}, {"vbKeyInsert", 45}, {"vbKeyDelete", 46}, {"vbKeyHelp", 47},
            {"vbKeyNumlock", 144}, {"vbKeyScrollLock", 145},
            {"vbKeyMultiply", 106}, {"vbKeyAdd", 107}, {"vbKeySeparator", 108}, {"vbKeySubtract", 109},
            {"vbKeyDecimal", 110}, {"vbKeyDivide", 111},
        });
        // Key codes of letters, digits, the number pad and the function keys.
        for (char c = 'A'; c <= 'Z'; ++c)
            t.insert(QStringLiteral("vbkey") + QChar::fromLatin1(c).toLower(), ScriptValue::fromLong(c));
        for (int d = 0; d <= 9; ++d) {
            t.insert(QStringLiteral("vbkey%1").arg(d), ScriptValue::fromLong(48 + d));
            t.insert(QStringLiteral("vbkeynumpad%1").arg(d), ScriptValue::fromLong(96 + d));
        }
        for (int f = 1; f <= 16; ++f)
            t.insert(QStringLiteral("vbkeyf%1").arg(f), ScriptValue::fromLong(111 + f));
        t.insert(QStringLiteral("vbcrlf"), ScriptValue::fromString(QStringLiteral("\r\n")));
        t.insert(QStringLiteral("vbnewline"), ScriptValue::fromString(QStringLiteral("\r\n")));
        t.insert(QStringLiteral("vblf"), ScriptValue::fromString(QStringLiteral("\n")));
        t.insert(QStringLiteral("vbcr"), ScriptValue::fromString(QStringLiteral("\r")));
        t.insert(QStringLiteral("vbtab"), ScriptValue::fromString(QStringLiteral("\t")));
        t.insert(QStringLiteral("vbnullchar"), ScriptValue::fromString(QString(QChar(0))));
        t.insert(QStringLiteral("vbnullstring"), ScriptValue::fromString(QString()));
        t.insert(QStringLiteral("vbback"), ScriptValue::fromString(QStringLiteral("\b")));
        t.insert(QStringLiteral("vbformfeed"), ScriptValue::fromString(QStringLiteral("\f")));
        t.insert(QStringLiteral("vbverticaltab"), ScriptValue::fromString(QStringLiteral("\v")));
        return t;
    }();
    return table;
}

} // namespace cadsim
