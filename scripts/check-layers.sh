#!/bin/sh
# Layers of the core depend downwards only: a file of one layer includes headers of its own layer or
# of the layers below it, never of a layer above. session.h gathers the state of all of them and
# is included by .cpp files only, never by a header. Below form/, a file doesn't touch the form
# through the session either (session.form, FormModel, FormUpdate): what reads or writes controls
# lives in form/ or above. Prints each include or use that breaks this; fails if any.
# Usage: check-layers.sh [source folder]   (default: src of this repository)
src=${1:-$(dirname "$0")/../src}
layers="support grids mesh modelfiles data form definition create commands"
below_form="support grids mesh modelfiles data"
faults=0
below=""
for layer in $layers; do
    below="$below $layer"
    [ -d "$src/$layer" ] || continue
    for file in "$src/$layer"/*.h "$src/$layer"/*.cpp; do
        [ -f "$file" ] || continue
        for included in $(sed -n 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*"\([a-z_]*\)\/.*/\1/p' "$file"); do
            case " $below " in
            *" $included "*) ;;
            *)
                echo "$file: $layer includes $included/ (a layer above it)"
                faults=$((faults + 1))
                ;;
            esac
        done
        case " $below_form " in
        *" $layer "*)
            # Comments may name the form; code may not.
            uses=$(sed 's://.*$::' "$file" | grep -nE '(\.|->)form\b|\bFormModel\b|\bFormUpdate\b' | cut -d: -f1)
            for line in $uses; do
                echo "$file:$line: $layer uses the form (a layer above it)"
                faults=$((faults + 1))
            done
            ;;
        esac
        case "$file" in
        *.h)
            if grep -q '^[[:space:]]*#[[:space:]]*include[[:space:]]*"session.h"' "$file"; then
                echo "$file: a header includes session.h"
                faults=$((faults + 1))
            fi
            ;;
        esac
    done
done
if [ "$faults" -gt 0 ]; then
    echo "$faults include(s) or use(s) reach up a layer"
    exit 1
fi
echo "layers depend downwards only"
