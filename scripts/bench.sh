#!/usr/bin/env bash
# Builds and runs the benchmarks (optimised, in build/):
#   scripts/bench.sh [decoder|gl|facade|peer|wall] [arguments...]
# decoder_bench times the decoder's GetImage, gl_bench the GL back-end's frame path,
# facade_bench the facade's frame path beside the back-end's (all three Google Benchmark
# programs: further arguments go to them, e.g. --benchmark_filter=RGB24 or
# --benchmark_repetitions=5); with none named, these three run.
# peer_bench times our GL and software frame paths beside SDL2 doing the same work in the same
# run and prints "peer <case>: ours <X> ms, SDL2 <Y> ms, ratio <Z>" per case (arguments:
# --frames N, --case SUBSTRING). wall_bench plays 4x4 and 8x8 walls of 1280x720 streams in one
# 1920x1080 window, ours and SDL2's, and prints frame rates, frame times, processor use and
# memory (arguments: --layout 4x4|8x8, --seconds S).
# Everything but decoder_bench needs a display with GLX and runs under its own Xvfb server
# (1920x1080) when there is no DISPLAY; peer_bench and wall_bench need SDL2 (libsdl2-dev,
# installed by scripts/setup.sh) and a screen of 1920x1080 or more.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh

programs=(decoder_bench gl_bench facade_bench)
case "${1:-}" in
  decoder) programs=(decoder_bench); shift ;;
  gl) programs=(gl_bench); shift ;;
  facade) programs=(facade_bench); shift ;;
  peer) programs=(peer_bench); shift ;;
  wall) programs=(wall_bench); shift ;;
esac

cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DRENDERER_BUILD_BENCH=ON >/dev/null
nice cmake --build build -j2 --target "${programs[@]}"

for program in "${programs[@]}"; do
  if [ "$program" != decoder_bench ] && [ -z "${DISPLAY:-}" ]; then
    xvfb-run -a -s "-screen 0 1920x1080x24 +extension GLX -noreset" "build/bench/$program" "$@"
  else
    "build/bench/$program" "$@"
  fi
done
