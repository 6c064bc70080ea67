#!/bin/sh
# tile_zarn.sh: tile_zarn.bat for sh, the same programs in the same order.
set -e
cd "$(dirname "$0")"
here=$(pwd)
skip=
# Coord Boundaries: 1000.00000 1100.00000 2100.00000 2200.00000
# Cell Boundaries: 3 7 7 11

cd tile0102


# run coarse forward model and calculate residual


Zarnextract ../mesh ../refined.sus zarninv3d_tile.sus 1 9 5 13 1 30

cp ../../coarse_files/coarse.msh tilenull.msh
Zarnnullvol ../../coarse_files/coarse.msh ../../coarse_files/coarse.sus tilenull.sus 1000.00 1100.00 2100.00 2200.00 -900.000 0.000

zarnpre3d "../../mag1.mtx|../../mag2.mtx" tilenull.sus mag_null.obs mag.obs MASK=0

if [ ! -e mag1.mtx ]; then skip=domtx; fi
if [ -z "$skip" ] && [ ! -e mag2.mtx ]; then skip=domtx; fi
if [ -z "$skip" ]; then skip=skipsen; fi

if [ "$skip" = domtx ]; then skip=; fi
if [ -z "$skip" ]; then
    pgrep -f Zarnsen3D_RPCServer >/dev/null || { Zarnsen3D_RPCServer & }
    zarnsen3d_cluster_controller "${here}/tile0102"

fi
if [ "$skip" = skipsen ]; then skip=; fi

if [ -e zarninv3d.kap ]; then skip=restartinversion; fi
if [ -z "$skip" ]; then
    zarninv3d zarninv3d.inp
fi
if [ -z "$skip" ]; then skip=finishinversion; fi

if [ "$skip" = restartinversion ]; then skip=; fi

if [ -z "$skip" ]; then
    zarninv3d zarninv3d.restart

fi
if [ "$skip" = finishinversion ]; then skip=; fi

Zarnerror mag.obs zarninv3d.pre error.dat mesh
Zarninsert mesh zarninv3d.sus ../mesh ../zarninv3d.sus 3 6 7 10 1 25


cd ..
