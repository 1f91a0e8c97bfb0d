#!/usr/bin/env bash
# Installs the library into an empty folder and builds the README's C++ example against that copy, once through the CMake
# package and once through pkg-config; the example's picture must be the one that `korvane blur` makes.
# usage: consumer_test.sh SOURCE_DIR BUILD_DIR CXX
set -euo pipefail
source=$1
build=$2
export CXX=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

cmake --install "$build" --prefix "$folder/prefix" >install.log
awk '/^```cpp/ {inside = 1; next} /^```/ {inside = 0} inside' "$source/README.md" >example.cpp
cmake -S "$source/tests/consumer" -B consumer -DCMAKE_PREFIX_PATH="$folder/prefix" -DSNIPPET="$folder/example.cpp" >cmake.log
cmake --build consumer >build.log
pc=$(find prefix -name korvane.pc)
export PKG_CONFIG_PATH=$folder/${pc%/*}
# shellcheck disable=SC2046
"$CXX" -std=c++20 example.cpp -o example $(pkg-config --cflags --libs korvane)
library=$(find "$folder/prefix" -name libkorvane.so)

prefix/bin/korvane scene photo.jpg --size 333x222
prefix/bin/korvane blur photo.jpg -o expected.jpg --radius 25 --color '#102040' --alpha 112
for program in consumer/consumer ./example; do
    rm -f background.jpg
    LD_LIBRARY_PATH=${library%/*} "$program"
    cmp background.jpg expected.jpg
done
