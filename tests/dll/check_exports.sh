#!/usr/bin/env bash
# Fails when an expected name (a line of EXPECTED) is not among the DLL's
# exports. Usage: check_exports.sh DLL EXPECTED OBJDUMP CXXFILT
set -euo pipefail
dll=$1 expected=$2 objdump=$3 cxxfilt=$4
exports=$(mktemp)
trap 'rm -f "$exports"' EXIT
# The export name table: "[ordinal] name" lines after "[Ordinal/Name Pointer] Table".
"$objdump" -p "$dll" |
  awk '/\[Ordinal\/Name Pointer\] Table/ {t=1; next} t && /^[ \t]*\[/ {print $NF; next} t {t=0}' |
  "$cxxfilt" | sort -u >"$exports"
missing=0
while IFS= read -r name; do
  case "$name" in ''|'#'*) continue ;; esac
  if ! grep -qxF -- "$name" "$exports"; then
    echo "not exported: $name"
    missing=$((missing + 1))
  fi
done <"$expected"
count=$(grep -cvE '^(#|$)' "$expected")
echo "$((count - missing)) of $count expected names exported ($(wc -l <"$exports") exports in all)"
[ "$missing" -eq 0 ]
