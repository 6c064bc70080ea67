#!/usr/bin/env bash
# Installs what is missing, builds the command line and runs it on the bundled magnetic example.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j2 --target invsetup
build/apps/cli/invsetup show examples/magnetic/inversion.inp
