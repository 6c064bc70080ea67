#!/bin/sh
# run_cluster.sh: run_cluster.bat for sh, the same programs in the same order.
set -e
cd "$(dirname "$0")"
here=$(pwd)
pgrep -f Zarnsen3D_RPCServer >/dev/null || { Zarnsen3D_RPCServer & }
zarnsen3d_cluster_controller "${here}/"
sh ./run_zarninv3d.sh
Vorlextract mesh C:/data/bounds.sus mag3d_bounds.sus 1 20 1 20 1 15 -Bounds C:/data/rock props.txt
echo 'Inversion done: 100%'
# pause
