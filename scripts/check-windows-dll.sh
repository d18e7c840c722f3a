#!/usr/bin/env bash
# Checks a Windows build: the module exports Startup and Shutdown undecorated,
# and no DLL imports anything beyond the system's own libraries.
set -euo pipefail
triple=$1
dir=$2
objdump=$triple-objdump
status=0
exports=$($objdump -p "$dir/ZelVideoFilters.tpi")
for name in Startup Shutdown; do
  if ! grep -qE "\] $name\$" <<<"$exports"; then
    echo "ZelVideoFilters.tpi ($triple) does not export $name undecorated"
    status=1
  fi
done
for dll in "$dir"/ZelVideoFilters.tpi "$dir"/ZelCore.DLL "$dir"/*.DLL; do
  [ -f "$dll" ] || continue
  while read -r imported; do
    case "${imported,,}" in
      kernel32.dll|user32.dll|advapi32.dll|msvcrt.dll|gdi32.dll) ;;
      *) echo "$(basename "$dll") ($triple) needs $imported"; status=1 ;;
    esac
  done < <($objdump -p "$dll" | sed -n 's/^\s*DLL Name: //p')
done
[ $status -eq 0 ] && echo "$triple: exports and imports as expected"
exit $status
