#!/usr/bin/env bash
# Builds every target (native, sanitizers, Windows x64 and x86) and runs
# every test: natively, under address/undefined and thread sanitizers, the
# x64 Windows build under Wine, the x86 DLL's exports, and a short fuzz run.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
out=$root/build
fuzz_seconds=${ZVF_FUZZ_SECONDS:-60}
bash "$root/scripts/install-deps.sh" all

passed=0
failed=0
run_ctest() {  # build-dir label
  local log
  log=$(mktemp)
  if (cd "$1" && ctest --output-on-failure -j2 2>&1 | tee "$log"); then :; fi
  local total fails
  total=$(sed -n 's/.*tests failed out of \([0-9]*\).*/\1/p' "$log" | tail -1)
  fails=$(sed -n 's/.*, \([0-9]*\) tests failed out of.*/\1/p' "$log" | tail -1)
  total=${total:-0}
  fails=${fails:-1}
  [ "$total" -gt 0 ] || fails=1
  passed=$((passed + total - fails))
  failed=$((failed + fails))
  echo "== $2: $((total - fails)) of $total passed"
  rm -f "$log"
}

configure() {  # dir [cmake args...]
  local dir=$1
  shift
  cmake -G Ninja -S "$root" -B "$dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
  ninja -C "$dir"
}

echo "== native"
configure "$out/native"
run_ctest "$out/native" native

echo "== address and undefined behaviour sanitizers"
configure "$out/asan" -DZVF_SANITIZE=address,undefined -DZVF_TOOLS=OFF
ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1 run_ctest "$out/asan" asan

echo "== thread sanitizer"
configure "$out/tsan" -DZVF_SANITIZE=thread -DZVF_TOOLS=OFF
TSAN_OPTIONS=halt_on_error=1 run_ctest "$out/tsan" tsan

echo "== Windows x64 under Wine"
export WINEPREFIX=${WINEPREFIX:-/tmp/zvf-wine-$(id -u)} WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree=;mshtml="
unset DISPLAY
configure "$out/w64" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-x64.cmake" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_CROSSCOMPILING_EMULATOR=/usr/lib/wine/wine64
/usr/lib/wine/wineserver64 -p </dev/null >/dev/null 2>&1 || true
/usr/lib/wine/wine64 wineboot -i </dev/null >/dev/null 2>&1 || true
run_ctest "$out/w64" wine64
/usr/lib/wine/wineserver64 -k >/dev/null 2>&1 || true

echo "== Windows x86 (built and checked; 32-bit programs cannot run here)"
configure "$out/w32" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-x86.cmake" -DCMAKE_BUILD_TYPE=Release
if bash "$root/scripts/check-windows-dll.sh" i686-w64-mingw32 "$out/w32/bin" && \
   bash "$root/scripts/check-windows-dll.sh" x86_64-w64-mingw32 "$out/w64/bin"; then
  passed=$((passed + 2))
else
  failed=$((failed + 1))
fi

echo "== fuzzing the blob readers for ${fuzz_seconds}s"
if ZVF_FUZZ_BUILD="$out/fuzz" bash "$root/fuzz/run.sh" "$fuzz_seconds"; then
  passed=$((passed + 1))
else
  failed=$((failed + 1))
fi

echo "tests: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
