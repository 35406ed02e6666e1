# Sourced by the benchmarks that run the real programs: a home and a vault
# of their own with copies of a sample part, and the STEP conversion task.
# Needs $root (the source tree) and $build (the build folder).

mctask() { "$build/app/mctask" "$@"; }
now_ms() { date +%s%3N; }

require_programs() {
  for program in "$build/app/mctask" "$build/cadsim/server/mcsim"; do
    [ -x "$program" ] || { echo "$(basename "$0"): $program is missing; build first (tools/bench.sh builds it)" >&2; exit 2; }
  done
}

# new_vault DIR FILES [FOLDERS]: a home and a vault in DIR, with FILES copies
# of the sample part spread over FOLDERS vault folders (Parts when 1, else
# Parts\F01 ...), the add-in and the stand-in installed in the home.
new_vault() {
  local dir=$1 files=$2 folders=${3:-1} i folder
  mkdir -p "$dir"
  export MCTASK_HOME="$dir/home" MCTASK_VAULT="$dir/vault" QT_QPA_PLATFORM=offscreen
  export MCSIM_EXPORT_RECORDS="$dir/exports"
  mctask addin register >/dev/null
  "$build/cadsim/server/mcsim" /regserver >/dev/null
  mctask vault init "$MCTASK_VAULT" --name Bench --drive V >/dev/null
  for ((i = 1; i <= files; i++)); do
    folder=$dir/parts
    [ "$folders" -gt 1 ] && folder=$dir/parts/$(printf 'F%02d' $(( (i - 1) % folders + 1 )))
    mkdir -p "$folder"
    cp "$root/samples/shaft.mcdprt" "$folder/part$i.mcdprt"
  done
  local first='V:\Parts\part1.mcdprt'
  if [ "$folders" -gt 1 ]; then
    mctask vault add "$dir"/parts/F* --to Parts >/dev/null # each folder keeps its name
    first='V:\Parts\F01\part1.mcdprt'
  else
    mctask vault add "$dir"/parts/*.mcdprt --to Parts >/dev/null
  fi
  # Declares the card variable that the outputs' cards are filled into.
  mctask vault card "$first" Description=Part >/dev/null
  mctask task create "To STEP" --kind convert >/dev/null 2>&1
  mctask task set "To STEP" "FileFormat=STEP (*.step)" 'OutputPath=<Path>\STEP\<Filename>' OutputPath2= \
    ErrorLogPath=Logs ReplaceOutput:bool=true RefToSource:bool=true PromptOutput:bool=false SourceRefs:int=2 \
    OutputConfs:int=1 FileConfs:int=4 OutputSheets:int=1 FileSheets:int=4 StepGeometry:int=0 StepVersion:int=203 \
    "FileCardData=Description;8;made by the benchmark
" >/dev/null
}

# outputs_under FOLDER: how many files the vault holds in and below FOLDER.
outputs_under() { mctask vault ls "$1" --json | grep -o '"path"' | wc -l; }
