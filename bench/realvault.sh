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

# launch_latencies HOST_JSONL SAMPLES LABEL: launches SAMPLES one-file
# instances of "To STEP" one after the other, each once the previous has
# ended on the host that writes HOST_JSONL (host serve --json), and prints
# the time from each launch's record to the host's "started" line (median,
# p99, min, max) after LABEL.
launch_latencies() {
  local log=$1 samples=$2 label=$3 i wait id launched started
  local latencies=()
  for ((i = 1; i <= samples; i++)); do
    id=$(mctask task launch "To STEP" 'V:\Parts\part1.mcdprt' 2>/dev/null | tail -1)
    launched=$(mctask task instances --json | tr -d '\n ' | sed 's/"guid":"[^"]*"//g' | tr '}' '\n' | grep "\"id\":$id," | grep -o '"created":"[^"]*"' | cut -d'"' -f4)
    for ((wait = 0; wait < 1200; wait++)); do
      grep -q "\"event\":\"ended\".*\"instance\":$id[,}]" "$log" && break
      sleep 0.05
    done
    started=$(grep "\"event\":\"started\".*\"instance\":$id[,}]" "$log" | grep -o '"time":"[^"]*"' | cut -d'"' -f4)
    [ -n "$started" ] && [ -n "$launched" ] || { echo "$(basename "$0"): instance $id did not start" >&2; return 1; }
    latencies+=($(( $(date -u -d "$started" +%s%3N) - $(date -u -d "$launched" +%s%3N) )))
  done
  printf '%s\n' "${latencies[@]}" | sort -n | awk -v n="$samples" -v label="$label" '
    { v[NR] = $1 }
    END {
      median = (n % 2) ? v[(n + 1) / 2] : (v[n / 2] + v[n / 2 + 1]) / 2
      p99 = v[int(0.99 * (n - 1)) + 1]
      printf "%s, %d launches: median %d ms, p99 %d ms, min %d ms, max %d ms\n", label, n, median, p99, v[1], v[n]
    }'
}
