#!/usr/bin/env bash
# Builds and runs the benchmarks (optimised, in build/). Extra arguments go to the benchmark
# program, e.g. --benchmark_filter=RGB24 or --benchmark_repetitions=5.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DRENDERER_BUILD_BENCH=ON >/dev/null
nice cmake --build build -j2 --target decoder_bench
exec build/bench/decoder_bench "$@"
