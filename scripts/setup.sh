#!/usr/bin/env bash
# Installs every system package the project needs to build, test and benchmark.
# Idempotent: when everything is present it only asks dpkg and returns at once.
set -euo pipefail

packages=(
  build-essential cmake pkg-config git
  libwxgtk3.2-dev libgtk-3-dev
  libgl1-mesa-dev libglu1-mesa-dev libgl1-mesa-dri mesa-utils
  # libavcodec brings the x264 and x265 encoders that the decoder tests make streams with.
  libavcodec-dev libavformat-dev libavutil-dev libswscale-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  # For the benchmarks only: SDL2 is the peer our frame paths are compared with.
  libsdl2-dev
  xvfb xauth
  clang-format
  # The fuzz harnesses (scripts/fuzz.sh): clang with libFuzzer and the sanitizer runtimes.
  clang libclang-rt-14-dev
  fonts-dejavu-core
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

echo "setup: installing ${missing[*]}"
sudo_cmd=()
if [ "$(id -u)" -ne 0 ]; then sudo_cmd=(sudo); fi
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
