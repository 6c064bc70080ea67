#!/bin/sh
# A stand-in for an outside program: writes "<folder>: <program> <arguments>" to $TWIN_LOG, checks
# the files it reads and writes the files the next step reads.
name=$(basename "$0")
[ "$name" = Zarnsen3D_RPCServer ] && exit 0
echo "$(basename "$PWD"): $name $*" >> "$TWIN_LOG"
need() { for f; do [ -e "$f" ] || { echo "$name: no $f" >&2; exit 3; }; done; }
case $name in
    Vorlextract|Zarnextract) need "$1" "$2"; touch "$3" ;;
    Vorlnullvol|Zarnnullvol) need "$1" "$2"; touch "$3" ;;
    magfor3d) need tilenull.msh; touch magfor3d.mag ;;
    Vorldelreg) need "$3"; touch "$4" ;;
    pfweight) need "$1" ;;
    magsen3d) need "$1"; touch maginv3d.mtx ;;
    maginv3d) need maginv3d.mtx "$1"; touch maginv3d.sus maginv3d.pre maginv3d.kap ;;
    vorlerror|Zarnerror) need "$1" "$2"; touch "$3" ;;
    Vorlinsert|Zarninsert) need "$2" "$4"; basename "$PWD" >> "$4" ;;
esac
