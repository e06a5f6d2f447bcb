#!/usr/bin/env bash
# Builds and runs the benchmarks (optimised, in build/):
#   scripts/bench.sh [decoder|gl|facade] [benchmark arguments...]
# decoder_bench times the decoder's GetImage, gl_bench the GL back-end's frame path, facade_bench
# the facade's frame path beside the back-end's; with none named, all run. gl_bench and
# facade_bench need a display with GLX and run under their own Xvfb server when there is no
# DISPLAY. Further arguments go to the benchmark programs, e.g.
# --benchmark_filter=RGB24 or --benchmark_repetitions=5.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

programs=(decoder_bench gl_bench facade_bench)
case "${1:-}" in
  decoder) programs=(decoder_bench); shift ;;
  gl) programs=(gl_bench); shift ;;
  facade) programs=(facade_bench); shift ;;
esac

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DRENDERER_BUILD_BENCH=ON >/dev/null
nice cmake --build build -j2 --target "${programs[@]}"

for program in "${programs[@]}"; do
  if [ "$program" != decoder_bench ] && [ -z "${DISPLAY:-}" ]; then
    xvfb-run -a -s "-screen 0 1280x1024x24 +extension GLX -noreset" "build/bench/$program" "$@"
  else
    "build/bench/$program" "$@"
  fi
done
