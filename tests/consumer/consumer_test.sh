#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the README's C++ example the three ways that clients have: through the CMake package and through pkg-config
# against a fresh installation, and with the sources as a subproject. Each time the example's picture must be the one
# that `korvane blur` makes. Each installed header must compile alone.
# usage: consumer_test.sh SOURCE_DIR BUILD_DIR CXX
set -euo pipefail
source=$1
build=$2
export CXX=$3
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

awk '/^```cpp/ {inside = 1; next} /^```/ {inside = 0} inside' "$source/README.md" >example.cpp
cmake --install "$build" --prefix "$folder/prefix" >install.log
# With nothing in front and the client's warnings on. Not on the path: the sources, the JDK.
(cd prefix/include/korvane && find . -name '*.h' -printf '%P\0' | xargs -0 -P "$(nproc)" -I HEADER sh -c \
    'echo "#include \"HEADER\"" | "$CXX" -std=c++20 -Wall -Wextra -Wconversion -Werror -fsyntax-only -I. -x c++ - ||
        { echo "does not compile alone: HEADER"; exit 1; }')

cmake -S "$source/tests/consumer" -B package -DCMAKE_PREFIX_PATH="$folder/prefix" -DSNIPPET="$folder/example.cpp" >cmake.log
cmake --build package >build.log

pc=$(find prefix -name korvane.pc)
export PKG_CONFIG_PATH=$folder/${pc%/*}
# shellcheck disable=SC2046
"$CXX" -std=c++20 example.cpp -o example $(pkg-config --cflags --libs korvane)

# This copy of the library is compiled once more: without optimisation and for the processor's baseline alone that is
# quick, and the folder stays, so the next run compiles what has changed.
subproject=$build/tests/consumer
cmake -S "$source/tests/consumer" -B "$subproject" -DKORVANE_SOURCE_DIR="$source" -DSNIPPET="$folder/example.cpp" \
    -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS=-DHWY_COMPILE_ONLY_STATIC -G Ninja >cmake.log
cmake --build "$subproject" >build.log || { cat build.log; exit 1; }
cmake --install "$subproject" --prefix "$folder/client" >install.log
[ "$(cd client && find . -type f)" = ./bin/consumer ] || { find client; echo "the client installs our files"; exit 1; }

prefix/bin/korvane scene photo.jpg --size 333x222
prefix/bin/korvane blur photo.jpg -o expected.jpg --radius 25 --color '#102040' --alpha 112
library=$(find "$folder/prefix" -name libkorvane.so)
export LD_LIBRARY_PATH=${library%/*}
for program in package/consumer ./example "env -u LD_LIBRARY_PATH $subproject/consumer"; do
    rm -f background.jpg
    $program
    cmp background.jpg expected.jpg
done
