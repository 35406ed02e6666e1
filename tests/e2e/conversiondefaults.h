#pragma once

#include <QStringList>

// What the conversion task's set-up pages store when confirmed as they come.
inline const QStringList ConversionDefaults = {
    "FileFormat=Adobe PDF (*.pdf)", "OutputPath2=", "ErrorLogPath=Logs", "OutputConfs:int=3", "FileConfs:int=5",
    "OutputSheets:int=3", "FileSheets:int=5", "NamedConf=Default", "NamedSheet=Default", "PdfInColor:bool=true",
    "PdfEmbedFonts:bool=true", "PdfHighQuality:bool=false", "PdfPrintHeaderFooter:bool=false",
    "PdfUsePrinterLineWeights:bool=true", "GlmpOkayToMeasure:bool=false", "GlmpAllowExportOfSTL:bool=false",
    "GlmpSaveShadedData:bool=true", "GlmpSaveBOM:bool=true", "GlmpSaveMotionStudies:bool=true",
    "GlmpSaveMotionStudiesToAllConfs:bool=false", "GlmpRecalcMotionStudies:bool=true", "VrmlOutputAsUnit:int=0",
    "VrmlSaveAssemblyAsOneFile:bool=false", "AcisGeometry:int=0", "AcisVersion:int=18", "AcisOutputAsUnit:int=0",
    "ParasolidVersion:int=17", "ParasolidFlattenHierarchy:bool=false", "IgesExportSolidSurface:bool=true",
    "IgesRepresentation:int=0", "IgesExportWireframe:bool=false", "IgesCurveRepresentation:int=0",
    "IgesSystem:int=0", "IgesExportFreeCurves:bool=true", "IgesExportSketchEntities:bool=false",
    "IgesHighCurveAccuracy:bool=true", "IgesComponentsIntoOneFile:bool=true",
    "IgesFlattenAssemblyHierarchy:bool=true", "StepGeometry:int=0", "StepVersion:int=203", "StlOutputAs:bool=true",
    "StlOutputAsUnit:int=0", "StlQuality:int=1", "StlDontTranslatePositive:bool=false",
    "StlComponentsIntoOneFile:bool=false", "StlCheckForInterferences:bool=false", "TifImageType:int=1",
    "TifCompressionScheme:int=0"};
