#!/usr/bin/env bash
# Installs what the build, the tools and the tests need on Debian 12.
# Usage: install-deps.sh [demo|all]
set -euo pipefail
what=${1:-all}
packages=(cmake ninja-build g++ pkg-config libgtest-dev libcli11-dev nlohmann-json3-dev libpng-dev)
if [ "$what" = all ]; then
  packages+=(googletest libbenchmark-dev clang libclang-rt-14-dev valgrind ffmpeg locales
             wine wine64 g++-mingw-w64-i686 g++-mingw-w64-x86-64 binutils-mingw-w64-i686 binutils-mingw-w64-x86-64)
fi
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  [ "$(id -u)" -ne 0 ] && sudo=sudo
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
if [ "$what" = all ]; then
  # Wine derives the user's locale from LANG only for locales that exist.
  for l in ja_JP nl_NL; do
    locale -a 2>/dev/null | grep -qi "^$l.utf-\?8$" || localedef -i "$l" -f UTF-8 "$l.UTF-8"
  done
fi
