#!/usr/bin/env bash
# Builds the fuzz targets with clang (address + undefined sanitizers) and
# runs each for SECONDS (default 60).
set -euo pipefail
seconds=${1:-60}
root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZVF_FUZZ_BUILD:-$root/build-fuzz}
CC=clang CXX=clang++ cmake -G Ninja -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZVF_FUZZ=ON \
  -DZVF_TESTS=OFF -DZVF_TOOLS=OFF "-DZVF_SANITIZE=address,undefined" >/dev/null
ninja -C "$build" blob_reader_fuzz
corpus=$(mktemp -d)
trap 'rm -rf "$corpus"' EXIT
"$build/bin/blob_reader_fuzz" -max_total_time="$seconds" -max_len=4096 -print_final_stats=1 "$corpus" 2>&1 | tail -n 12
