#!/usr/bin/env bash
# Installs the libraries from build/ into a scratch prefix and builds a consumer project
# outside the tree against the installed CMake package, then runs it.
set -euo pipefail
cd "$(dirname "$0")/.."
prefix="$PWD/build/package-check/install"
consumer="$PWD/build/package-check/consumer"
rm -rf build/package-check
cmake --install build --prefix "$prefix" >/dev/null
cmake -S tests/package-consumer -B "$consumer" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
cmake --build "$consumer" -j"$(nproc)"
LD_LIBRARY_PATH="$prefix/lib:${LD_LIBRARY_PATH:-}" "$consumer/consumer"
