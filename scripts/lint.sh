#!/usr/bin/env bash
# lint.sh [BUILD]: checks every source of the repository, by clang-format, by the import rules, by the share of tests
# and, where a build directory is named, by clang-tidy with its compile commands. Exits 1 when any of them objects.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=${1-}

# New files are checked before they are added; a checkout of another user's is no reason to stop.
mapfile -t sources < <(git -c safe.directory='*' ls-files --cached --others --exclude-standard '*.h' '*.cpp')
if ((${#sources[@]} == 0)); then
    echo "lint: git lists no sources here" >&2
    exit 1
fi
failed=()

check() { # NAME COMMAND...
    local name=$1
    shift
    echo "== $name"
    "$@" || failed+=("$name")
}

check_format() { clang-format --dry-run -Werror "${sources[@]}"; }

check_tidy() {
    # The sources of the other platform's twins aren't compiled here, so they have no entry.
    sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build/compile_commands.json" | sort -u |
        xargs -r -P "$(nproc)" -n 4 clang-tidy --quiet -p "$build" 2> >(grep -vE '^[0-9]+ (warning|error).* generated\.$' >&2)
}

check "clang-format" check_format
check "imports" scripts/check_imports.sh "${sources[@]}"
check "share of tests" scripts/test_share.sh "${sources[@]}"
[[ -z $build ]] || check "clang-tidy" check_tidy

if ((${#failed[@]})); then
    echo "lint: failed: ${failed[*]}" >&2
    exit 1
fi
echo "lint: ${#sources[@]} sources are clean"
