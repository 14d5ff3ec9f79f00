#!/usr/bin/env bash
# fuzz.sh BUILD SECONDS: runs each fuzz target of the build directory for that long, from its seed
# corpus in fuzz/corpus, or from what fuzz/CORPUS_seeds.sh makes. Findings stay under the build directory: BUILD/work/TARGET/ holds the corpus
# grown so far, BUILD/artifacts/ the inputs that failed. Exits 1 when any target failed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$1
seconds=$2

run_target() { # TARGET CORPUS
    local work=$build/work/$1 seeds=fuzz/corpus/$2 artifacts=$build/artifacts/$1-
    if [[ -x fuzz/$2_seeds.sh ]]; then
        seeds=$build/seeds/$2
        "fuzz/$2_seeds.sh" "$PWD/$seeds"
    fi
    if [[ -z $(ls -A "$seeds" 2>/dev/null) ]]; then
        echo "fuzz: no seed corpus in $seeds" >&2
        return 1
    fi
    mkdir -p "$work"
    # libFuzzer writes what it finds into the first directory and only reads the others.
    "$build/bin/$1" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 \
        -verbosity=0 -artifact_prefix="$artifacts" "$work" "$seeds"
}

mkdir -p "$build/artifacts"
failed=()
while read -r target corpus; do
    echo "== $target, $seconds s"
    started=$(mktemp)
    if ! run_target "$target" "$corpus"; then
        failed+=("$target")
        find "$build/artifacts" -name "$target-*" -newer "$started" -printf 'failing input: %p\n'
    fi
    rm -f "$started"
done <"$build/fuzz_targets.txt"

if ((${#failed[@]})); then
    echo "fuzz: failed: ${failed[*]}" >&2
    exit 1
fi
echo "fuzz: no target failed"
