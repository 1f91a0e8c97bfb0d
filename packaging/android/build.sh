#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Builds the library for Android with the NDK and packages it. Called by ./dev android.
set -euo pipefail

usage() {
    cat <<'TEXT'
usage: ./dev android [OPTION...]

Builds libkorvane.so for Android and makes korvane-VERSION.aar (Java and Kotlin), korvane-native-VERSION.aar (C++, by
prefab), the symbols of both, and a Maven folder with both. Needs ANDROID_NDK_HOME, the folder of an NDK of version 26 or
newer; 26, 27 and 28 are known.

  --abi ABI          arm64-v8a or x86_64; may be given twice                          [both]
  --jpeg DIR         sources of libjpeg-turbo                                         [Debian's, fetched by apt-get]
  --highway DIR      sources of Highway                                               [Debian's, fetched by apt-get]
  --out DIR          where the archives go; the folder is made anew                   [out/android]
  --work DIR         where it builds                                                  [build/android]
  --stand-ins        package the desktop's builds for x86-64 and 64-bit ARM instead; needs no NDK
  --dry-run          say what would be run
TEXT
}

die() {
    echo "android: $*" >&2
    exit 2
}

cd "$(dirname "${BASH_SOURCE[0]}")/../.."
root=$PWD
# Of Debian 12, whose signed lists vouch for them.
jpeg_package=libjpeg-turbo=1:2.1.5-2
highway_package=highway=1.0.3-3+deb12u1
oldest_ndk=26
newest_known_ndk=28
min_sdk=26

abis=()
jpeg=
highway=
out=$root/out/android
work=$root/build/android
stand_ins=false
dry_run=false
while [ $# -gt 0 ]; do
    case "$1" in
    --abi | --jpeg | --highway | --out | --work)
        [ $# -ge 2 ] || die "$1 needs a value"
        case "$1" in
        --abi)
            case "$2" in
            arm64-v8a | x86_64) abis+=("$2") ;;
            *) die "there is no ABI '$2': arm64-v8a or x86_64" ;;
            esac
            ;;
        --jpeg | --highway)
            [ -f "$2/CMakeLists.txt" ] || die "$2 has no CMakeLists.txt: $1 takes a folder of sources"
            [ "$1" = --jpeg ] && jpeg=$(realpath "$2") || highway=$(realpath "$2")
            ;;
        --out) out=$(realpath -m "$2") ;;
        --work) work=$(realpath -m "$2") ;;
        esac
        shift
        ;;
    --stand-ins) stand_ins=true ;;
    --dry-run) dry_run=true ;;
    -h | --help)
        usage
        exit 0
        ;;
    *) die "unknown option '$1'; --help lists them" ;;
    esac
    shift
done
[ ${#abis[@]} -gt 0 ] || abis=(arm64-v8a x86_64)
version=$(sed -n 's/^project(korvane VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)

run() {
    if $dry_run; then
        printf '%q ' "$@"
        echo
    else
        "$@"
    fi
}

find_ndk() {
    ndk=${ANDROID_NDK_HOME:-}
    [ -n "$ndk" ] || die "ANDROID_NDK_HOME is not set: it is the folder of the NDK"
    [ -f "$ndk/source.properties" ] || die "$ndk has no source.properties: it is no NDK"
    ndk_major=$(sed -n 's/^Pkg\.Revision *= *\([0-9]*\).*/\1/p' "$ndk/source.properties")
    [ -n "$ndk_major" ] || die "$ndk/source.properties names no revision"
    [ "$ndk_major" -ge $oldest_ndk ] || die "the NDK is r$ndk_major; it must be r$oldest_ndk or newer"
    if [ "$ndk_major" -gt $newest_known_ndk ]; then
        echo "android: r$ndk_major is newer than r$newest_known_ndk, the newest NDK that is known to work" >&2
    fi
    toolchain=$ndk/build/cmake/android.toolchain.cmake
    [ -f "$toolchain" ] || die "$ndk has no build/cmake/android.toolchain.cmake"
    local tools=("$ndk"/toolchains/llvm/prebuilt/*/bin/llvm-strip)
    strip=${tools[0]}
    [ -x "$strip" ] || die "$ndk has no llvm-strip"
}

# The sources of a Debian package, into $work/sources. With lists of its own, so that it needs neither root nor source
# lines in the system's settings.
fetch() {
    local package=$1 folder=$2 lists=$work/apt
    if [ -d "$folder" ]; then
        return
    fi
    run mkdir -p "$lists/state/lists/partial" "$lists/parts" "$work/sources"
    if $dry_run; then
        echo "(the system's package sources, as sources of source packages, into $lists/parts)"
    else
        local file
        for file in /etc/apt/sources.list /etc/apt/sources.list.d/*; do
            case "$file" in
            *.sources) sed 's/^Types:.*/Types: deb-src/' "$file" >"$lists/parts/${file##*/}" ;;
            *.list) [ ! -f "$file" ] || sed -n 's/^deb /deb-src /p' "$file" >"$lists/parts/${file##*/}" ;;
            esac
        done
    fi
    local options=(-qq -o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$lists/parts"
        -o "Dir::State::lists=$lists/state/lists" -o APT::Get::List-Cleanup=false)
    run apt-get "${options[@]}" update
    local before=$PWD
    run cd "$work/sources"
    run apt-get "${options[@]}" source "$package" ||
        die "Debian's archive does not give $package: give a folder of its sources by --jpeg or --highway"
    run cd "$before"
    local name=${package%%=*}
    $dry_run || mv "$work/sources/$name"-*/ "$folder"
}

android_cmake() {
    local source=$1 build=$2 abi=$3
    shift 3
    run cmake -S "$source" -B "$build" -G Ninja "-DCMAKE_TOOLCHAIN_FILE=$toolchain" "-DANDROID_ABI=$abi" \
        "-DANDROID_PLATFORM=android-$min_sdk" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@"
}

build_dependencies() {
    local abi=$1
    local prefix=$work/$abi/prefix
    android_cmake "$jpeg" "$work/$abi/jpeg" "$abi" "-DCMAKE_INSTALL_PREFIX=$prefix" -DENABLE_SHARED=OFF \
        -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
        -DWITH_TURBOJPEG=OFF
    run cmake --build "$work/$abi/jpeg" --target install
    android_cmake "$highway" "$work/$abi/highway" "$abi" "-DCMAKE_INSTALL_PREFIX=$prefix" -DBUILD_SHARED_LIBS=OFF \
        -DCMAKE_POSITION_INDEPENDENT_CODE=ON \
        -DBUILD_TESTING=OFF -DHWY_ENABLE_TESTS=OFF -DHWY_ENABLE_EXAMPLES=OFF -DHWY_ENABLE_CONTRIB=OFF
    run cmake --build "$work/$abi/highway" --target install
}

build_library() {
    local abi=$1 stl=$2
    android_cmake "$root" "$work/$abi/$stl" "$abi" "-DANDROID_STL=$stl" "-DCMAKE_FIND_ROOT_PATH=$work/$abi/prefix" \
        -DKORVANE_BUILD_TESTS=OFF -DKORVANE_BUILD_TOOLS=OFF -DKORVANE_BUILD_JAVA=OFF
    run cmake --build "$work/$abi/$stl" --target korvane
}

build_classes() {
    local sources standins
    mapfile -t sources < <(find java/com java/korvane/effects -name '*.java')
    mapfile -t standins < <(find java/android java/javax -name '*.java')
    run rm -rf "$work/classes" "$work/standins"
    run mkdir -p "$work/classes" "$work/standins"
    run javac --release 8 -Xlint:-options -d "$work/standins" "${standins[@]}"
    run javac --release 8 -Xlint:all,-options -cp "$work/standins" -d "$work/classes" "${sources[@]}"
    run jar --create --file "$work/korvane.jar" -C "$work/classes" .
}

package() {
    run python3 packaging/android/package.py --version "$version" --sources java --out "$out" "$@"
}

build_stand_ins() {
    run cmake --preset dev
    run cmake --build --preset dev
    run cmake --preset aarch64
    run cmake --build --preset aarch64 --target korvane
    run cmake --install build/dev --prefix "$work/installed"
    local options=()
    local library
    for library in x86_64=build/dev/libkorvane.so arm64-v8a=build/aarch64/libkorvane.so; do
        options+=(--java-library "$library" --native-library "$library")
    done
    package --stand-in --strip arm64-v8a=aarch64-linux-gnu-strip --classes build/dev/java/korvane.jar \
        --headers "$work/installed/include/korvane" "${options[@]}"
}

if $stand_ins; then
    build_stand_ins
    exit
fi
find_ndk
if [ -z "$jpeg" ]; then
    jpeg=$work/sources/jpeg
    fetch "$jpeg_package" "$jpeg"
fi
if [ -z "$highway" ]; then
    highway=$work/sources/highway
    fetch "$highway_package" "$highway"
fi
build_classes
options=()
for abi in "${abis[@]}"; do
    build_dependencies "$abi"
    for stl in c++_static c++_shared; do
        build_library "$abi" "$stl"
    done
    options+=(--java-library "$abi=$work/$abi/c++_static/libkorvane.so"
        --native-library "$abi=$work/$abi/c++_shared/libkorvane.so" --strip "$abi=$strip")
done
run cmake --install "$work/${abis[0]}/c++_static" --prefix "$work/installed"
package --ndk "$ndk_major" --classes "$work/korvane.jar" --headers "$work/installed/include/korvane" "${options[@]}"
echo "android: a Gradle project takes them from the repository $out/repository"
