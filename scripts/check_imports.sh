#!/usr/bin/env bash
# check_imports.sh FILE...: the house rules about #include and #ifdef that the compiler can't see.
#  - a folder includes itself and what stands below it, as the table says;
#  - tests, fuzz and bench may include everything, and only those three may include tests;
#  - own headers are included from the repository's root;
#  - _WIN32 is asked for in platform/ alone.
set -euo pipefail

awk '
    BEGIN {
        # "mvrtpfec" are the public headers, in include/mvrtpfec.
        allowed["platform"] = "platform"
        allowed["include"] = "mvrtpfec"
        allowed["support"] = "support mvrtpfec platform"
        allowed["core"] = "core support mvrtpfec platform"
        allowed["guard"] = "guard core support mvrtpfec platform"
        allowed["engine"] = "engine " allowed["guard"]
        allowed["framework"] = "framework support mvrtpfec platform"
        allowed["rtp_media"] = "rtp_media framework core support mvrtpfec platform"
        allowed["selftest"] = "selftest " allowed["rtp_media"]
        allowed["sender"] = "sender framework core support mvrtpfec platform"
        allowed["receiver"] = "receiver framework core support mvrtpfec platform"
        allowed["module"] = "module sender receiver framework support mvrtpfec platform"
        allowed["host"] = "host engine guard selftest rtp_media framework core support mvrtpfec platform"
        everything = allowed["host"] " sender receiver tests bench fuzz"
        allowed["tests"] = allowed["bench"] = allowed["fuzz"] = everything
        for (folder in allowed) {
            count = split(allowed[folder], names)
            for (i = 1; i <= count; ++i) mayInclude[folder, names[i]] = 1
        }
    }
    function object(message) {
        printf "%s:%d: %s\n", FILENAME, FNR, message
        found = 1
    }
    FNR == 1 { folder = FILENAME; sub(/\/.*/, "", folder) }
    # An example stands by itself: it sees an installed package and its own files.
    /^[ \t]*#[ \t]*include[ \t]*"/ && folder != "examples" {
        header = $0
        sub(/^[^"]*"/, "", header)
        sub(/".*/, "", header)
        target = header
        sub(/\/.*/, "", target)
        if (header !~ /\// || !(target in allowed || target == "mvrtpfec"))
            object("\"" header "\" is not named from the root of the repository")
        else if (!((folder, target) in mayInclude))
            object(folder "/ must not include " target "/")
    }
    /(^|[^A-Za-z0-9_])_WIN32/ && folder != "platform" { object("_WIN32 belongs in platform/") }
    END { exit found }
' "$@"
