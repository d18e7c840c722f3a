#!/usr/bin/env bash
# Builds the module and the command-line host, and runs the demo: every built
# filter on the built-in test picture, a contact sheet, the frames and a legend
# (in ./zvf-demo unless -o DIR is given).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
bash "$root/scripts/install-deps.sh" demo
cmake -G Ninja -S "$root" -B "$root/build/demo" -DCMAKE_BUILD_TYPE=Release -DZVF_TESTS=OFF >/dev/null
ninja -C "$root/build/demo" zvf ZelVideoFilters ZelCore
"$root/build/demo/bin/zvf" demo "$@"
