#!/usr/bin/env bash
# Fails when the DLL imports anything but system DLLs (the GCC runtime and
# winpthread must be linked in). Usage: check_imports.sh DLL OBJDUMP
set -euo pipefail
dll=$1 objdump=$2
allowed='^(kernel32|user32|gdi32|advapi32|shell32|shlwapi|ole32|oleaut32|version|winmm|msvcrt|ucrtbase|api-ms-win-[a-z0-9-]+)\.dll$'
bad=0
for name in $("$objdump" -p "$dll" | awk '/DLL Name:/ {print tolower($3)}'); do
  if [[ $name =~ $allowed ]]; then echo "imports $name"; else echo "not a system DLL: $name"; bad=1; fi
done
exit $bad
