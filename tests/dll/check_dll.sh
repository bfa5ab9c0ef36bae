#!/usr/bin/env bash
# Checks the shipped DLL with objdump: it exports exactly the names of the .def file, imports
# Windows system DLLs only (the C++ runtime, winpthread, zlib and TinyXML are linked in), and
# carries a version resource. Writes a GoogleTest-style report so that it is counted with the
# other tests.
#   check_dll.sh <objdump> <dll> <def-file> <report.xml>
set -u
objdump=$1 dll=$2 def=$3 report=$4

dump=$("$objdump" -p "$dll" 2>&1) || { echo "objdump failed: $dump"; exit 1; }

failures=()
cases=()
check() { # name, failure text or empty
  cases+=("$1")
  if [ -n "$2" ]; then failures+=("$1|$2"); echo "[  FAILED  ] $1: $2"; else echo "[       OK ] $1"; fi
}

expected=$(grep -E '^\s+Oracle' "$def" | tr -d ' \t\r' | sort)
actual=$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$dump" | sed -n 's/^\s*\[ *[0-9]*\] \(.*\)$/\1/p' | sort)
msg=""
[ "$(wc -l <<<"$expected")" = 18 ] || msg="the .def file does not list eighteen names"
[ "$expected" = "$actual" ] || msg="exports differ from the .def file: $(diff <(echo "$expected") <(echo "$actual") | tr '\n' ' ')"
check ExportsExactlyTheEighteenNames "$msg"

allowed='^(kernel32|user32|advapi32|msvcrt|ole32|oleaut32|shell32|shlwapi|rpcrt4|ws2_32|netapi32|secur32|userenv|version|crypt32|api-ms-win-.*)\.dll$'
msg=""
imports=$(sed -n 's/^\s*DLL Name: *//p' <<<"$dump" | tr 'A-Z' 'a-z')
[ -n "$imports" ] || msg="no import table found"
for dllname in $imports; do
  grep -qE "$allowed" <<<"$dllname" || msg="$msg imports $dllname, which is no Windows system DLL;"
done
check ImportsWindowsSystemDllsOnly "$msg"

msg=""
sed -n '/The .rsrc Resource Directory section/,/Resources start/p' <<<"$dump" | grep -q 'Entry: ID: 0x000010,' ||
  msg="no RT_VERSION (16) entry in the resource directory"
check CarriesAVersionResource "$msg"

{
  echo '<?xml version="1.0" encoding="UTF-8"?>'
  echo "<testsuites tests=\"${#cases[@]}\" failures=\"${#failures[@]}\" disabled=\"0\" errors=\"0\" name=\"AllTests\">"
  echo "  <testsuite name=\"DllCheck\" tests=\"${#cases[@]}\" failures=\"${#failures[@]}\" disabled=\"0\" errors=\"0\">"
  for c in "${cases[@]}"; do
    f=$(printf '%s\n' "${failures[@]:-}" | sed -n "s/^$c|//p")
    if [ -n "$f" ]; then
      echo "    <testcase name=\"$c\" classname=\"DllCheck\"><failure message=\"$(sed 's/[&<>"]/_/g' <<<"$f")\"/></testcase>"
    else
      echo "    <testcase name=\"$c\" classname=\"DllCheck\"/>"
    fi
  done
  echo "  </testsuite>"
  echo "</testsuites>"
} >"$report"
[ ${#failures[@]} = 0 ]
