#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The build script with an NDK that is only a folder: what it refuses, what it asks of CMake, and that it packages what
# comes out. The compilers are not run; a "cmake" of the test's own puts the desktop's library in their place.
# usage: build_test.sh SOURCE_DIR BUILD_DIR JDK_HOME
# shellcheck source=tests/android/set_up.sh
. "$(dirname "${BASH_SOURCE[0]}")/set_up.sh"
script=$source/packaging/android/build.sh
ndk=$work/ndk

refused() {
    local message=$1
    shift
    local code=0
    "$script" "$@" >"$work/output" 2>"$work/errors" || code=$?
    if [ $code != 2 ] || ! grep -qF -- "$message" "$work/errors" || [ "$(wc -l <"$work/errors")" != 1 ]; then
        cat "$work/errors"
        fail "$* gave $code; expected 2 and '$message'"
    fi
}

unset ANDROID_NDK_HOME
refused "ANDROID_NDK_HOME is not set"
export ANDROID_NDK_HOME=$ndk
refused "it is no NDK"
mkdir -p "$ndk/build/cmake" "$ndk/toolchains/llvm/prebuilt/linux-x86_64/bin"
echo 'Pkg.Revision = 25.2.9519653' >"$ndk/source.properties"
refused "the NDK is r25; it must be r26 or newer"
echo 'Pkg.Revision = 26.1.10909125' >"$ndk/source.properties"
refused "no build/cmake/android.toolchain.cmake"
touch "$ndk/build/cmake/android.toolchain.cmake"
refused "no llvm-strip"
ln -s "$(command -v strip)" "$ndk/toolchains/llvm/prebuilt/linux-x86_64/bin/llvm-strip"
refused "there is no ABI 'mips'" --abi mips
refused "--abi needs a value" --abi
refused "has no CMakeLists.txt" --jpeg "$work"
refused "unknown option '--fast'" --fast

# Without given folders the pinned sources are fetched.
"$script" --dry-run --work "$work/build" >"$work/dry"
for package in libjpeg-turbo=1:2.1.5-2 highway=1.0.3-3+deb12u1; do
    grep -q "apt-get .* source $package" "$work/dry" || fail "$package is not fetched"
done
[ "$(grep -c -- '--target korvane ' "$work/dry")" = 4 ] || fail "not two ABIs with two C++ libraries each"

mkdir -p "$work/bin" "$work/jpeg" "$work/highway"
touch "$work/jpeg/CMakeLists.txt" "$work/highway/CMakeLists.txt"
real_cmake=$(command -v cmake)
cat >"$work/bin/cmake" <<FAKE
#!/bin/sh
echo "\$*" >>"$work/calls"
case "\$1" in
--build) mkdir -p "\$2"; cp "$build/libkorvane.so" "\$2/" ;;
--install) exec "$real_cmake" --install "$build" --prefix "\$4" ;;
esac
FAKE
chmod +x "$work/bin/cmake"
# The desktop's library needs the desktop's others.
code=0
PATH=$work/bin:$PATH "$script" --abi x86_64 --jpeg "$work/jpeg" --highway "$work/highway" --out "$work/out" \
    --work "$work/build" \
    >"$work/output" 2>&1 || code=$?
[ $code = 2 ] || fail "a desktop's library was packaged as Android's"
grep -q 'package: .*libkorvane.so needs .*libc.so.6' "$work/output" || fail "$(cat "$work/output")"
for wanted in "ANDROID_ABI=x86_64" "ANDROID_PLATFORM=android-26" "ANDROID_STL=c++_static" "ANDROID_STL=c++_shared" \
    "CMAKE_BUILD_TYPE=RelWithDebInfo" "CMAKE_TOOLCHAIN_FILE=$ndk/build/cmake/android.toolchain.cmake"; do
    grep -qF -- "-D$wanted" "$work/calls" || fail "CMake is not told $wanted"
done
