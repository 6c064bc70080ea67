#!/bin/sh
# insert_all.sh: insert_all.bat for sh, the same programs in the same order.
set -e
cd "$(dirname "$0")"

# Clean up any previously merged data files

if [ -e zarninv3d_weights.dat ]; then rm -f zarninv3d_weights.dat; fi
if [ -e zarninv3d.old ]; then rm -f zarninv3d.old; fi
if [ -e zarninv3d.sus ]; then mv zarninv3d.sus zarninv3d.old; fi
if [ -e refined.sus ]; then cp refined.sus zarninv3d.sus; fi
if [ -e error.dat ]; then rm -f error.dat; fi

# Boundaries: 1000.00000 1050.00000 2000.00000 2050.00000
cd tile0101
Vorlinsert mesh maginv3d.sus ../mesh ../maginv3d.sus 3 6 3 6 1 10 2 1
cd ..

# Boundaries: 1000.00000 1050.00000 2050.00000 2100.00000
# cd tile0102
# Vorlinsert mesh maginv3d.sus ../mesh ../maginv3d.sus 3 6 7 10 1 10
# cd ..

