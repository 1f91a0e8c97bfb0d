#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# fetch_peers.sh FOLDER: unpacks Debian's arm64 packages of the peers, and of what they need, into FOLDER. Nothing is
# installed: beside the same packages of this machine's processor they would bring half a system along.
set -euo pipefail

packages=(libyuv0 libimagequant0 libopencv-core406 libopencv-imgproc406 libopencv-features2d406 libopencv-flann406
    libblas3 liblapack3 libgfortran5 libgomp1 libtbb12 zlib1g)
folder=$1
if [ -e "$folder/complete" ]; then
    exit 0
fi
rm -rf "$folder"
mkdir -p "$folder/packages"
cd "$folder/packages"
apt-get download -qq "${packages[@]/%/:arm64}"
for package in *.deb; do
    dpkg -x "$package" ..
done
touch ../complete
