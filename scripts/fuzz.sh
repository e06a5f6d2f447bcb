#!/usr/bin/env bash
# Builds the libFuzzer harnesses (clang, AddressSanitizer + UndefinedBehaviorSanitizer, in
# build-fuzz/) and runs them:
#   scripts/fuzz.sh [--ci]              each harness for 60 s (what CI runs)
#   scripts/fuzz.sh --hours H [NAME...] each named harness (default all) for H hours
#   scripts/fuzz.sh --seconds S [NAME...]
#   scripts/fuzz.sh --replay [NAME...]  only the regression inputs and the corpora, once each
#   scripts/fuzz.sh --seeds             rewrites the decoder seeds in fuzz/corpus/decoder
# Harnesses: decoder, rawframe, renderer (the renderer one under its own Xvfb server when
# there is no DISPLAY). Each first replays fuzz/regressions/NAME (every input a bug once
# found), then fuzzes from fuzz/corpus/NAME (committed seeds) and build-fuzz/corpus/NAME (what
# earlier runs found; kept between runs). Two harnesses run at a time. Crashes, leaks,
# time-outs and out-of-memory inputs land in build-fuzz/artifacts/NAME/ and fail the run; the
# last lines give, per harness, the executions, corpus size, time and peak RSS
# (build-fuzz/fuzz-summary.txt).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

seconds=60
mode=fuzz
case "${1:-}" in
  --ci | "") shift || true ;;
  --hours) seconds=$(awk "BEGIN { printf \"%d\", $2 * 3600 }"); shift 2 ;;
  --seconds) seconds=$2; shift 2 ;;
  --replay) mode=replay; seconds=0; shift ;;
  --seeds) mode=seeds; shift ;;
  *) echo "usage: $0 [--ci | --hours H | --seconds S | --replay | --seeds] [NAME...]" >&2; exit 2 ;;
esac
harnesses=("$@")
[ ${#harnesses[@]} -eq 0 ] && harnesses=(decoder renderer rawframe)

build=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DRENDERER_FUZZ=ON \
  -DRENDERER_BUILD_TESTS=OFF -DRENDERER_BUILD_APPS=OFF -DRENDERER_BUILD_BENCH=OFF >/dev/null
targets=(fuzz_seed_writer)
for name in "${harnesses[@]}"; do targets+=("${name}_fuzzer"); done
cmake --build "$build" -j"$(nproc)" --target "${targets[@]}"

if [ "$mode" = seeds ]; then
  rm -f fuzz/corpus/decoder/*
  mkdir -p fuzz/corpus/decoder
  ASAN_OPTIONS=detect_leaks=0 "$build/fuzz/fuzz_seed_writer" fuzz/corpus/decoder
  ls -l fuzz/corpus/decoder
  exit 0
fi

# Runs a harness binary with its arguments, under Xvfb for the renderer without a display.
harness() {
  local name=$1
  shift
  if [ "$name" = renderer ] && [ -z "${DISPLAY:-}" ]; then
    xvfb-run -a -s "-screen 0 1280x1024x24 +extension GLX -noreset" "$build/fuzz/${name}_fuzzer" "$@"
  else
    "$build/fuzz/${name}_fuzzer" "$@"
  fi
}

# Replays the regression inputs, then fuzzes for $seconds (or, with --replay, runs the
# corpora once); writes the log and a summary line.
run_one() {
  local name=$1
  local log="$build/logs/$name.log"
  local corpus="$build/corpus/$name"
  local artifacts="$build/artifacts/$name/"
  mkdir -p "$build/logs" "$corpus" "$artifacts" "fuzz/corpus/$name"
  : >"$log"
  local status=ok
  local regressions=(fuzz/regressions/"$name"/*)
  if [ -e "${regressions[0]}" ] && ! harness "$name" "${regressions[@]}" >>"$log" 2>&1; then
    status="regression-failed"
  fi
  local options=(-timeout=30 -rss_limit_mb=2560 -print_final_stats=1 -artifact_prefix="$artifacts")
  # The call-sequence harnesses do little with a few bytes: long inputs from the start.
  [ "$name" = decoder ] || options+=(-len_control=0 -max_len=1024)
  options+=("$corpus" "fuzz/corpus/$name")
  if [ "$status" = ok ]; then
    if [ "$mode" = replay ]; then
      harness "$name" -runs=0 "${options[@]}" >>"$log" 2>&1 || status=failed
    else
      harness "$name" -max_total_time="$seconds" "${options[@]}" >>"$log" 2>&1 || status=failed
    fi
  fi
  # Executions and peak RSS from libFuzzer's final statistics; the corpus size (inputs kept,
  # seeds included) from its last status line.
  local executions rss size
  executions=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  rss=$(sed -n 's/^stat::peak_rss_mb: *//p' "$log" | tail -1)
  size=$(grep -o 'corp: [0-9]*' "$log" | tail -1 | cut -d' ' -f2)
  printf '%-9s %-18s executions=%-9s corpus=%-6s seconds=%-6s peak_rss_mb=%s\n' "$name" \
    "$status" "${executions:-0}" "${size:-?}" "$seconds" "${rss:-?}" >"$build/logs/$name.summary"
}

# Two harnesses at a time (the machine's cores); each uses one.
pids=()
for name in "${harnesses[@]}"; do
  run_one "$name" &
  pids+=($!)
  if [ ${#pids[@]} -ge 2 ]; then
    wait "${pids[0]}"
    pids=("${pids[@]:1}")
  fi
done
wait

failed=0
: >"$build/fuzz-summary.txt"
for name in "${harnesses[@]}"; do
  cat "$build/logs/$name.summary" >>"$build/fuzz-summary.txt"
  if ! grep -q ' ok ' "$build/logs/$name.summary"; then
    failed=1
    echo "---- $name failed; the end of $build/logs/$name.log:"
    grep -v '^#[0-9]\|^"' "$build/logs/$name.log" | tail -40
    ls -l "$build/artifacts/$name/"
  fi
done
cat "$build/fuzz-summary.txt"
exit $failed
