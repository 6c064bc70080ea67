#!/usr/bin/env bash
# Installs what is missing, configures, builds and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j2
ctest --test-dir build --output-on-failure -j2

# Once more under AddressSanitizer + UndefinedBehaviorSanitizer (clang) in a build folder of its own:
# every test (the window's excepted) and each reader's fuzzing harness for a short while.
[ "${INVSETUP_SKIP_SANITIZED:-0}" = 1 ] && exit 0
started=$SECONDS
CC=clang CXX=clang++ cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DINVSETUP_FUZZ=ON -DINVSETUP_BUILD_GUI=OFF -DINVSETUP_BUILD_BENCH=OFF
cmake --build build-sanitize -j2
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir build-sanitize --output-on-failure -j2
seconds=${INVSETUP_FUZZ_SECONDS:-20}
# A fixed seed makes a red run repeatable on any machine; longer runs with fresh seeds are for a
# person to start (README).
seed=${INVSETUP_FUZZ_SEED:-1}
for harness in build-sanitize/fuzz/fuzz_*; do
    [ -x "$harness" ] || continue
    name=$(basename "$harness" | sed 's/^fuzz_//')
    corpus=$(mktemp -d)
    # Crash inputs land in the regressions folder: commit them with the fix.
    "$harness" -seed="$seed" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=0 \
        -artifact_prefix="fuzz/regressions/$name/" "$corpus" "fuzz/seeds/$name" 2>&1 | tail -n 3
    rm -rf "$corpus"
done
echo "Sanitized build, tests and fuzzing: $((SECONDS - started)) s" >&2
