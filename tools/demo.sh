#!/usr/bin/env bash
# Main job: installs, builds, installs the stand-in Mecadra, makes a demo vault in a
# fresh folder and runs a "Convert Files" task on a folder of it, end to end.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/tools/install-deps.sh"
"$root/tools/build.sh"
build=${MCTASK_BUILD_DIR:-$root/build}

work=$(mktemp -d /tmp/mctask-demo.XXXXXX)
export MCTASK_HOME="$work/home"
export MCTASK_VAULT="$work/vault"
export QT_QPA_PLATFORM=offscreen
mctask() { "$build/app/mctask" "$@"; }
step() { printf '\n== %s\n' "$*"; }
started=$(date +%s)

step "Register the add-in module and install the stand-in Mecadra"
mctask addin register
"$build/cadsim/server/mcsim" /regserver

step "Create a vault mounted as V: and add the sample documents at revision B"
mctask vault init "$MCTASK_VAULT" --name Demo --drive V
mctask vault add "$root"/samples/layout.mcddrw "$root"/samples/bracket.mcdprt "$root"/samples/shaft.mcdprt \
  --to Parts --revision B --state Released >/dev/null
# The card variables the outputs' cards are filled into.
mctask vault card 'V:\Parts\shaft.mcdprt' Revision=B Description=Shaft >/dev/null
mctask vault ls

step "Create a \"Convert Files\" task: PDF, one file per sheet and configuration,"
echo "   a reference to the source, the card's Revision from the source and a free text"
mctask task create "Convert to PDF" --kind convert || true
mctask task set "Convert to PDF" \
  "FileFormat=Adobe PDF (*.pdf)" 'OutputPath=<Path>\PDF\<Filename>_<Configuration>' OutputPath2= \
  ErrorLogPath=Logs ReplaceOutput:bool=false RefToSource:bool=true PromptOutput:bool=false SourceRefs:int=2 \
  OutputConfs:int=2 FileConfs:int=4 OutputSheets:int=2 FileSheets:int=4 NamedConf=Default NamedSheet=Default \
  "FileCardData=Revision;4;
Description;8;PDF made by the Mecadra Task Add-in
" \
  PdfInColor:bool=true PdfEmbedFonts:bool=true PdfHighQuality:bool=false PdfPrintHeaderFooter:bool=false \
  PdfUsePrinterLineWeights:bool=true GlmpOkayToMeasure:bool=false GlmpAllowExportOfSTL:bool=false \
  GlmpSaveShadedData:bool=true GlmpSaveBOM:bool=true GlmpSaveMotionStudies:bool=true \
  GlmpSaveMotionStudiesToAllConfs:bool=false GlmpRecalcMotionStudies:bool=true VrmlOutputAsUnit:int=0 \
  VrmlSaveAssemblyAsOneFile:bool=false AcisGeometry:int=0 AcisVersion:int=18 AcisOutputAsUnit:int=0 \
  ParasolidVersion:int=17 ParasolidFlattenHierarchy:bool=false IgesExportSolidSurface:bool=true \
  IgesRepresentation:int=0 IgesExportWireframe:bool=false IgesCurveRepresentation:int=0 IgesSystem:int=0 \
  IgesExportFreeCurves:bool=true IgesExportSketchEntities:bool=false IgesHighCurveAccuracy:bool=true \
  IgesComponentsIntoOneFile:bool=true IgesFlattenAssemblyHierarchy:bool=true StepGeometry:int=0 \
  StepVersion:int=203 StlOutputAs:bool=true StlOutputAsUnit:int=0 StlQuality:int=1 \
  StlDontTranslatePositive:bool=false StlComponentsIntoOneFile:bool=false StlCheckForInterferences:bool=false \
  TifImageType:int=1 TifCompressionScheme:int=0
mctask task get "Convert to PDF" FileFormat OutputPath RefToSource

step "Launch it on the folder V:\\Parts"
id=$(mctask task launch "Convert to PDF" 'V:\Parts' | tail -1)
echo "instance $id"

step "Run it here, as the task host, with the stand-in Mecadra"
mctask task run "$id" || true

step "The details of the instance"
mctask task details "$id"

step "The vault now holds the PDFs"
mctask vault ls 'V:\Parts\PDF'

step "One output: its version, check-in comment, card and reference to its source"
mctask vault show 'V:\Parts\PDF\layout_Sheet1.pdf'

step "A \"Print Files\" task: an assembly and its drawing, to a print queue of the demo's own"
mctask vault add "$root"/samples/gearbox.mcdasm --to Parts >/dev/null
mctask vault ref 'V:\Parts\gearbox.mcdasm' 'V:\Parts\layout.mcddrw' >/dev/null
if socket=$("$root/tools/privatecups.sh" start "$work/cups" McPdf); then
  export CUPS_SERVER="$socket"
  trap '"$root/tools/privatecups.sh" stop "$work/cups"' EXIT
  printer=McPdf
  echo "   a private CUPS server at $socket, its queue McPdf writes each job as a PDF"
else
  export MCSIM_PRINTERS="Office;Plotter"
  printer=Plotter
  echo "   cupsd cannot run here: the stand-in's own printer \"Plotter\" stands in for the queue"
fi
mctask task create "Print" --kind print
# Its pages' defaults (A4, landscape), the printer, and the assembly's drawings
# ticked along with it.
mctask task setup "Print" >/dev/null
mctask task set "Print" "__printer_prname=$printer" __printer_autoselectrefstype:int=1 >/dev/null
id=$(mctask task launch "Print" 'V:\Parts\gearbox.mcdasm' | tail -1)
mctask task run "$id" || true
mctask task details "$id"
if [ "$printer" = McPdf ]; then
  for _ in $(seq 50); do [ "$(ls "$work/cups/out"/*.pdf 2>/dev/null | wc -l)" -ge 2 ] && break; sleep 0.2; done
  echo "The queue's PDFs:"
  ls -l "$work/cups/out"
fi

printf '\nDemo folder: %s (%ss)\n' "$work" "$(( $(date +%s) - started ))"
