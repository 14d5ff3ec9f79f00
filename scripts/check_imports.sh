#!/usr/bin/env bash
# check_imports.sh FILE...: the house rules about #include and #ifdef that the compiler can't see.
#  - platform <- support <- core <- guard <- host: a folder includes itself and what stands below it;
#  - tests, fuzz and bench may include all of these, and only those three may include tests;
#  - own headers are included from the repository's root;
#  - _WIN32 is asked for in platform/ alone.
set -euo pipefail

awk '
    BEGIN {
        count = split("platform support core guard host", order)
        for (i = 1; i <= count; ++i) rank[order[i]] = i
        rank["tests"] = rank["fuzz"] = rank["bench"] = count + 1
    }
    function object(message) {
        printf "%s:%d: %s\n", FILENAME, FNR, message
        found = 1
    }
    FNR == 1 { folder = FILENAME; sub(/\/.*/, "", folder) }
    /^[ \t]*#[ \t]*include[ \t]*"/ {
        header = $0
        sub(/^[^"]*"/, "", header)
        sub(/".*/, "", header)
        target = header
        sub(/\/.*/, "", target)
        if (header !~ /\// || !(target in rank))
            object("\"" header "\" is not named from the root of the repository")
        else if (rank[target] > rank[folder])
            object(folder "/ must not include " target "/")
    }
    /_WIN32/ && folder != "platform" { object("_WIN32 belongs in platform/") }
    END { exit found }
' "$@"
