#!/usr/bin/env bash
# Installs what is missing, builds the command line and creates the run package of the bundled
# magnetic example (UBC MAG3D V5) in build/runs/magnetic.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j2 --target invsetup
build/apps/cli/invsetup create examples/magnetic/inversion.inp build/runs/magnetic
echo
echo "The run package is in build/runs/magnetic:"
ls -l build/runs/magnetic
