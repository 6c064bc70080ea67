#!/bin/sh
# iter_all.sh: iter_all.bat for sh, the same programs in the same order.
set -e
cd "$(dirname "$0")"
# Num data 25
sh ./tile0101.sh
# Num data 3
# sh ./tile0102.sh

