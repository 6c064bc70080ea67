#!/usr/bin/env bash
# Installs the Debian packages invsetup builds and tests with. Idempotent: returns at once when all
# of them are present. Run as root (or through sudo).
set -euo pipefail

packages=(
    build-essential cmake ninja-build pkg-config clang libclang-rt-14-dev
    libcli11-dev libgtest-dev libgmock-dev libbenchmark-dev
    libgdal-dev gdal-bin libcgal-dev libgmp-dev libmpfr-dev libfreeimage-dev libtiff-dev
    qt6-base-dev xvfb xauth
    procps slurm-wlm munge python3-vtk9
)

missing=()
for package in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}" >&2
sudo_cmd=()
[ "$(id -u)" -eq 0 ] || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
