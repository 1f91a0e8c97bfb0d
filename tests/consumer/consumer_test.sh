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

# What the example does not call is there for clients too.
nm -DC --defined-only "$library" >exported.txt
for name in Object:: RefBase:: Mutex:: RWLock:: Condition:: Thread:: ThreadWorker:: ThreadPool:: \
    Stream:: FileStream:: MemoryStream:: JavaInputStream:: JavaOutputStream:: StreamReader:: StreamWriter:: \
    Image:: ColorConvert:: ImageDecoder:: ImageEncoder:: JpegDecoder:: JpegEncoder:: ImageDecoderFactory:: \
    ImageEncoderFactory:: Matrix:: GPUContext:: GPUEngine:: GPUImage2D:: GPUImage3D:: GPUPixelBuffer:: \
    GPUFramebuffer:: GPUScript:: GPUScriptSource:: GPUProgram:: GPUUtils:: ImageFilterBaseGL:: ImageFilterFactory:: \
    ColorQuantizer:: galloc_malloc\( galloc_free\( string_format\( atomic_add32\( systemTime\( make_timeout\( \
    toMillisecondTimeoutDelay\( color_convert_rgb2nv21\( stack_blur\( alpha_blend\( alpha_blend_neon\( fast_blur\( \
    box_blur\( box_blurH\( box_blurV\( gauss_blur\( calculate_gauss_blur_coef\( gaussiir\( blur_line\( \
    calculate_gauss_iir_coefficients\( make_offsets\( lbp_pyr_features\( lbp_pyr_features_sparse\( lbp_pyr_dotprod\( \
    lbp_pyr_addvec\( lbp_pyr_subvec\( lbp_pyr_get_dim\( makeOffsets\( cornerScore16\( fast16\( \
    super_capture_module_init super_capture_module_push_frame super_capture_module_pop_frame \
    super_capture_module_destroy make_photo_timestamp_watermark_to_yuyv; do
    grep -qF " $name" exported.txt || { echo "not exported: $name"; exit 1; }
done

prefix/bin/korvane scene photo.jpg --size 333x222
prefix/bin/korvane blur photo.jpg -o expected.jpg --radius 25 --color '#102040' --alpha 112
for program in consumer/consumer ./example; do
    rm -f background.jpg
    LD_LIBRARY_PATH=${library%/*} "$program"
    cmp background.jpg expected.jpg
done
