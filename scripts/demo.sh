#!/usr/bin/env bash
# demo.sh PROGRAM: lets the sample stream lose packets and repairs it, without and with the packet
# guard, and shows the two side by side.
set -euo pipefail
program=$1
simulate=(simulate --mode both --columns 10 --rows 10 --loss 0.03)

reports=$(mktemp -d)
trap 'rm -rf "$reports"' EXIT

for guard in off on; do
    echo "\$ ${program##*/} ${simulate[*]} --guard $guard"
    # 3: packets were lost for good.
    "$program" "${simulate[@]}" --guard "$guard" >"$reports/$guard" || (($? == 3))
done
echo

# A report is a title, indented rows of a name and a number, and a sentence. A row that only one of the
# two has leaves the other's place empty.
awk '
    FNR == 1 { ++report; next }
    /^  / {
        number = $NF
        name = $0
        sub(/^ +/, "", name)
        sub(/ +[^ ]+$/, "", name)
        if (!(name in seen)) { seen[name] = 1; names[++count] = name }
        cell[name, report] = number
        next
    }
    NF { verdict[report] = $0 }
    END {
        printf "%-20s %12s %12s\n", "", "guard off", "guard on"
        for (i = 1; i <= count; ++i)
            printf "%-20s %12s %12s\n", names[i], cell[names[i], 1], cell[names[i], 2]
        printf "\nguard off: %s\nguard on:  %s\n", verdict[1], verdict[2]
    }
' "$reports/off" "$reports/on"
