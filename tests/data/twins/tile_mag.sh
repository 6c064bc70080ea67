#!/bin/sh
# tile_mag.sh: tile_mag.bat for sh, the same programs in the same order.
set -e
cd "$(dirname "$0")"
skip=
# Coord Boundaries: 1000.00000 1100.00000 2000.00000 2100.00000
# Cell Boundaries: 3 7 3 7

cd tile0101


# extract initial model

Vorlextract ../mesh ../model.sus model.sus 1 9 1 9 1 12 -Expand


# extract reference model

Vorlextract ../mesh ../ref.sus mag3d_ref.sus 1 9 1 9 1 12 -Expand -Ref ../rocks.txt


# run coarse forward model and calculate residual

if [ -e mag.obs ]; then skip=skipforwardmodel; fi

if [ -z "$skip" ]; then
    Vorlextract ../mesh ../refined.sus maginv3d.mod 1 9 1 9 1 12 -Expand ../mag.obs ../topo.dat

    cp ../../coarse/coarse.msh tilenull.msh
    Vorlnullvol ../../coarse/coarse.msh ../../coarse/coarse.sus tilenull.sus 1000.00 1100.00 2000.00 2100.00 -500.000 100.000

    magfor3d tilenull.msh mag.dat tilenull.sus ../../coarse/topo.dat

    Vorldelreg mag.dat - magfor3d.mag mag.obs 2 1

fi
if [ "$skip" = skipforwardmodel ]; then skip=; fi

if [ -e maginv3d.mtx ]; then skip=skipsen; fi
if [ -z "$skip" ]; then
    pfweight mag_weights.inp 4
    magsen3d magsen3d.inp

fi
if [ "$skip" = skipsen ]; then skip=; fi

if [ -e maginv3d.kap ]; then skip=restartinversion; fi
if [ -z "$skip" ]; then
    maginv3d maginv3d.inp
fi
if [ -z "$skip" ]; then skip=finishinversion; fi

if [ "$skip" = restartinversion ]; then skip=; fi

if [ -z "$skip" ]; then
    maginv3d maginv3d.restart

fi
if [ "$skip" = finishinversion ]; then skip=; fi

vorlerror mag.obs maginv3d.pre error.dat mesh
Vorlinsert mesh maginv3d.sus ../mesh ../maginv3d.sus 3 6 3 6 1 10 2 1


cd ..
