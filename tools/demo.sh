#!/usr/bin/env bash
# Main job: installs, builds, installs the stand-in Mecadra, makes a demo vault in a
# fresh folder and runs a "Convert Files" task on a folder of it, end to end.
# --server: then also a vault on a PostgreSQL server of the demo's own, with two
# task hosts on other machines (homes) that run conversions launched by a client.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
server=false
for arg in "$@"; do
  case "$arg" in
  --server) server=true ;;
  *) echo "usage: tools/demo.sh [--server]" >&2; exit 2 ;;
  esac
done
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
# What the demo started is stopped when it ends, however it ends.
on_exit=()
trap 'for stop in "${on_exit[@]}"; do eval "$stop" || true; done' EXIT

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
pdf_settings=(
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
  TifImageType:int=1 TifCompressionScheme:int=0)
mctask task set "Convert to PDF" "${pdf_settings[@]}"
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
  on_exit+=('"$root/tools/privatecups.sh" stop "$work/cups"')
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

if $server; then
  step "A vault on a PostgreSQL server of the demo's own: a client and two task hosts, each a machine of its own"
  # The server's user (not root) must reach the demo folder.
  chmod 755 "$work"
  on_exit+=('"$root/tools/privatepg.sh" stop "$work/pg"')
  url=$("$root/tools/privatepg.sh" start "$work/pg")
  echo "   server $url (a Unix socket in $work/pg, no TCP port)"
  # mctask on one machine: its home and its local view of the vault.
  on() { local machine=$1; shift; MCTASK_HOME="$work/$machine/home" MCTASK_VAULT="$work/$machine/vault" "$build/app/mctask" "$@"; }
  on client vault init "$work/client/vault" --server "$url" --name Shared --drive V
  on client addin register >/dev/null
  for host in host1 host2; do
    on "$host" vault attach "$url" "$work/$host/vault" --drive V
    on "$host" addin register >/dev/null
    MCTASK_HOME="$work/$host/home" "$build/cadsim/server/mcsim" /regserver >/dev/null
  done

  step "The client adds the documents and launches one conversion per document"
  for n in 1 2 3; do cp "$root/samples/shaft.mcdprt" "$work/shaft$n.mcdprt"; done
  on client vault add "$root"/samples/layout.mcddrw "$root"/samples/bracket.mcdprt "$work"/shaft[123].mcdprt \
    --to Parts --revision B --state Released >/dev/null
  on client vault card 'V:\Parts\shaft1.mcdprt' Revision=B Description=Shaft >/dev/null
  on client task create "Convert to PDF" --kind convert
  on client task set "Convert to PDF" "${pdf_settings[@]}" >/dev/null
  for file in layout.mcddrw bracket.mcdprt shaft1.mcdprt shaft2.mcdprt shaft3.mcdprt; do
    echo "   launched instance $(on client task launch "Convert to PDF" "V:\\Parts\\$file" | tail -1) on $file"
  done

  step "Both hosts serve until nothing waits (host serve --once); each fetches what its runs need"
  on host1 host serve --name host1 --once >"$work/host1.out" &
  first=$!
  on host2 host serve --name host2 --once >"$work/host2.out" &
  second=$!
  wait "$first" || true
  wait "$second" || true
  cat "$work/host1.out" "$work/host2.out"

  step "What ran where (from the client)"
  on client task instances

  step "The outputs, in the vault on the server"
  on client vault ls 'V:\Parts\PDF'
fi

printf '\nDemo folder: %s (%ss)\n' "$work" "$(( $(date +%s) - started ))"
