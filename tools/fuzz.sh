#!/usr/bin/env bash
# Builds the fuzz targets with clang into build-fuzz/ (or $MCTASK_FUZZ_DIR)
# and runs each for SECONDS (default 600), starting from and adding to its
# corpus in fuzz/corpus/<target>. The corpus is then merged down to the
# inputs that add coverage, so what is kept in the repository stays small.
#   tools/fuzz.sh [SECONDS] [TARGET...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/tools/install-deps.sh"
seconds=${1:-600}
shift || true
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(vault_fuzz macro_fuzz cadsim_engine_fuzz)
build=${MCTASK_FUZZ_DIR:-$root/build-fuzz}
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DMCTASK_BUILD_FUZZ=ON -DMCTASK_BUILD_BENCH=OFF \
  "-DMCTASK_FOLDERS=host;platform;common;addin;macro;run;vault;cadsim" >/dev/null
cmake --build "$build" -j "$(nproc)" --target "${targets[@]}"
status=0
for target in "${targets[@]}"; do
  corpus=$root/fuzz/corpus/$target
  work=$(mktemp -d)
  mkdir -p "$corpus"
  echo "== $target: ${seconds}s"
  # Crashes land in the work folder, never in the corpus.
  if ! "$build/fuzz/$target" -max_total_time="$seconds" -max_len=4096 -timeout=10 -rss_limit_mb=2048 \
       -artifact_prefix="$work/" "$work" "$corpus"; then
    echo "$target found a problem; inputs in $work" >&2
    status=1
    continue
  fi
  fresh=$(mktemp -d)
  "$build/fuzz/$target" -merge=1 "$fresh" "$corpus" "$work" >/dev/null 2>&1
  rm -rf "$corpus" "$work"
  mv "$fresh" "$corpus"
  echo "$target: corpus of $(ls "$corpus" | wc -l) inputs, $(cat "$corpus"/* 2>/dev/null | wc -c) bytes"
done
exit $status
