#!/usr/bin/env bash
# check_module.sh FILE...: whether each of these Windows modules exports exactly the four entry points of an
# in-process server, undecorated, and needs no DLL that Windows doesn't have. Exits 1 when one doesn't hold.
set -euo pipefail

expected_exports='DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer'
system_dlls='advapi32.dll kernel32.dll msvcrt.dll ole32.dll oleaut32.dll quartz.dll user32.dll winmm.dll'

imports() { sed -n 's/^\tDLL Name: //p' <<<"$1" | tr '[:upper:]' '[:lower:]' | sort -u; }
exports() { sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\t\[ *[0-9]*\] \(+base\[[^]]*\] *[0-9a-f]* \)\{0,1\}//p' <<<"$1" | sort; }

failed=0
for file; do
    tables=$(objdump -p "$file")
    found=$(exports "$tables" | xargs)
    foreign=$(comm -13 <(tr ' ' '\n' <<<"$system_dlls") <(imports "$tables") | xargs)
    if [[ $found != "$expected_exports" ]]; then
        echo "check_module: $file exports: ${found:-nothing}" >&2
        failed=1
    fi
    if [[ -n $foreign ]]; then
        echo "check_module: $file needs: $foreign" >&2
        failed=1
    fi
    echo "$file: exports $found; needs $(imports "$tables" | xargs)"
done
exit "$failed"
