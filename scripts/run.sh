#!/usr/bin/env bash
# Builds and starts the main program, the video wall. Extra arguments go to the program.
# Without a DISPLAY it plays under its own Xvfb server and writes a screenshot instead
# (build/videowall.png), saying where.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j"$(nproc)" --target videowall
program=build/apps/videowall/videowall
if [ -n "${DISPLAY:-}" ]; then
  exec "$program" "$@"
fi
if [ $# -eq 0 ]; then
  set -- --screenshot "$PWD/build/videowall.png"
fi
exec xvfb-run -a -s "-screen 0 1920x1080x24 +extension GLX -noreset" "$program" "$@"
