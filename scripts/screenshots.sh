#!/usr/bin/env bash
# Starts the window under Xvfb on each bundled example and saves a picture of every tab in
# build/screenshots/<example>/. Run after a build: scripts/screenshots.sh [build directory]
set -euo pipefail

root="$(cd "$(dirname "$0")/.." && pwd)"
build="${1:-$root/build}"
program="$build/apps/gui/invsetup-gui"
[ -x "$program" ] || { echo "screenshots: build the window first ($program is missing)" >&2; exit 1; }
command -v xvfb-run >/dev/null || { echo "screenshots: xvfb-run is missing (scripts/install-deps.sh)" >&2; exit 1; }

out="$build/screenshots"
mkdir -p "$out"
# The window's settings of this run stay apart from a person's.
config="$(mktemp -d)"
trap 'rm -rf "$config"' EXIT

for example in "$root"/examples/*/; do
    name="$(basename "$example")"
    mkdir -p "$out/$name"
    # A refinement example starts as a user would: its existing mesh and model read first.
    existing=()
    [ -f "$example/coarse.msh" ] && existing+=(--mesh coarse.msh)
    [ -f "$example/coarse.sus" ] && existing+=(--model coarse.sus)
    # The example's folder is the working directory, so that its relative file names resolve.
    (cd "$example" && XDG_CONFIG_HOME="$config" QT_QPA_PLATFORM=xcb \
        xvfb-run -a -s "-screen 0 1600x1000x24" "$program" --screenshots "$out/$name" "${existing[@]}" inversion.inp)
    rm -rf "$config"/*
    echo "$name: $(ls "$out/$name" | tr '\n' ' ')"
done
