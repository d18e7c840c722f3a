#!/usr/bin/env bash
# Builds the module and the command-line host, and runs the demo.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/install-deps.sh" demo
cmake -G Ninja -S "$root" -B "$root/build/native" -DCMAKE_BUILD_TYPE=Release >/dev/null
ninja -C "$root/build/native" zvf ZelVideoFilters ZelCore
"$root/build/native/bin/zvf" list "$@"
