#!/usr/bin/env bash
# Runs one fuzz target:  run-fuzzer.sh BINARY FUZZ_DIR WORK_DIR SECONDS
#
# SECONDS 0 replays the target's regression inputs and seeds once each.
# Otherwise the target fuzzes for SECONDS, starting from its seeds and
# regression inputs (read only) and keeping what it finds new in
# WORK_DIR/corpus. Exits non-zero on any finding (crash, hang, leak,
# sanitizer report, out of memory); the input that caused it is saved in
# WORK_DIR/artifacts/.
set -euo pipefail
binary=$1
fuzz_dir=$2
work=$3
seconds=$4
name=$(basename "$binary")
seeds=$fuzz_dir/corpus/$name
regressions=$fuzz_dir/regressions/$name
dict=$fuzz_dir/$name.dict

# The sanitizers' options come from CTest's environment (fuzz/CMakeLists.txt).
mkdir -p "$work/corpus" "$work/artifacts"
options=(-timeout=10 -rss_limit_mb=2048 -artifact_prefix="$work/artifacts/")
[ -f "$dict" ] && options+=(-dict="$dict")

if [ "$seconds" -eq 0 ]; then
  inputs=()
  for dir in "$regressions" "$seeds"; do
    [ -d "$dir" ] && while IFS= read -r -d '' file; do inputs+=("$file"); done \
      < <(find "$dir" -type f -print0 | sort -z)
  done
  echo "$name: replaying ${#inputs[@]} inputs"
  [ ${#inputs[@]} -eq 0 ] && exit 0
  exec "$binary" "${options[@]}" "${inputs[@]}"
fi

dirs=("$work/corpus")
for dir in "$seeds" "$regressions"; do
  [ -d "$dir" ] && dirs+=("$dir")
done
if ! "$binary" "${options[@]}" -max_total_time="$seconds" -print_final_stats=1 "${dirs[@]}"; then
  echo "$name found a fault; the input is in $work/artifacts/." >&2
  echo "Fix it, then keep the input as fuzz/regressions/$name/<what it found>." >&2
  exit 1
fi
