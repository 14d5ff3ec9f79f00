#!/usr/bin/env bash
# test_share.sh FILE...: prints the share of tests and fuzz targets among the code lines (no blank ones, no comments)
# of the C++ files named, and exits 1 when it is above the limit.
set -euo pipefail

# In tenths of a percent. The aim is 330.
limit=350

awk -v limit="$limit" '
    !/^[ \t]*(\/\/.*)?$/ { ++all; if (FILENAME ~ /^(tests|fuzz)\//) ++tests }
    END {
        share = all ? 1000 * tests / all : 0
        printf "%d of %d code lines are tests: %.1f %%, at most %.1f %%\n", tests, all, share / 10, limit / 10
        exit share > limit
    }
' "$@"
