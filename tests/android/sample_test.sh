#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# What can be checked of the sample app and of the guide's code without Android: its resources and manifest with
# Android's own tool, its code against our jar and stand-ins of the rest. The README's Java code is run.
# usage: sample_test.sh SOURCE_DIR BUILD_DIR JDK_HOME
# shellcheck source=tests/android/set_up.sh
. "$(dirname "${BASH_SOURCE[0]}")/set_up.sh"
product=$build/java/korvane.jar:$build/java/korvane_standins.jar
app=$source/samples/android/app/src/main

compile_java() {
    local classes=$1
    shift
    javac --release 8 -Xlint:-options -cp "$product:$work/standins" -d "$classes" "$@"
}

compile_kotlin() {
    local classes=$1
    shift
    # Kotlin's library of today holds what was a library of its own then.
    kotlinc -jvm-target 1.8 -cp "$product:$work/standins:$work/sample:/usr/share/java/kotlin-stdlib-jdk7.jar" -d "$classes" "$@" >"$work/kotlinc.log" 2>&1 || {
        cat "$work/kotlinc.log"
        fail "$* does not compile"
    }
}

# The code blocks of a kind, each into a file of its own: PREFIX1.kt, PREFIX2.kt ... with a first line that is given.
extract() {
    local document=$1 kind=$2 prefix=$3 first=$4
    awk -v kind="$kind" -v prefix="$prefix" -v first="$first" '
        $0 == "```" && file != "" { close(file); file = ""; next }
        $0 == "```" kind { ++count; file = prefix count (kind == "java" ? ".java" : ".kt"); print first count > file; next }
        file != "" { print > file }' "$document"
}

# The stand-ins.
mkdir -p "$work/sources" "$work/standins" "$work/sample" "$work/guide" "$work/classes"
(cd "$work/sources" && awk '
    /^=== / { file = name = $2; sub("/[^/]*$", "", name); system("mkdir -p " name)
        gsub("/", ".", name); print "package " name ";" > file; next }
    file != "" { print > file }' "$source/tests/android/standins.txt")
mapfile -t files < <(find "$work/sources" -name '*.java')
compile_java "$work/standins" "${files[@]}"
compile_kotlin "$work/standins" "$work/sources/kotlinx/coroutines/Standins.kt"

# The sample. The Gradle plugin puts the package into the manifest.
aapt2 compile --dir "$app/res" -o "$work/resources.zip"
sed 's/<manifest /<manifest package="korvane.sample" /' "$app/AndroidManifest.xml" >"$work/AndroidManifest.xml"
aapt2 link -I /usr/share/android-framework-res/framework-res.apk --manifest "$work/AndroidManifest.xml" \
    --min-sdk-version 26 --target-sdk-version 35 --java "$work/generated" -o "$work/sample.apk" "$work/resources.zip"
aapt2 dump badging "$work/sample.apk" | grep -q "launchable-activity: name='korvane.sample.MainActivity'" ||
    fail "the sample has no activity to start"
compile_java "$work/sample" "$work/generated/korvane/sample/R.java"
compile_kotlin "$work/classes" "$app/java/korvane/sample/MainActivity.kt"

# The version that the sample and the guide ask for is the one that is made.
version=$(sed -n 's/^project(korvane VERSION \([0-9.]*\).*/\1/p' "$source/CMakeLists.txt")
for file in "$source/samples/android/app/build.gradle.kts" "$source/docs/android.md"; do
    grep -q "\"korvane:korvane:$version\"" "$file" || fail "$file does not ask for version $version"
done

# The guide's Kotlin, all at once: each block in a package of its own.
extract "$source/docs/android.md" kotlin "$work/guide/block" "package guide"
[ "$(find "$work/guide" -name '*.kt' | wc -l)" -ge 6 ] || fail "the guide's code was not found"
compile_kotlin "$work/classes" "$work/guide"

# The README's Java, run on a picture.
extract "$source/README.md" java "$work/readme" "// "
{
    grep '^import' "$work/readme1.java"
    echo 'public class Readme { public static void main(String[] arguments) {'
    echo 'Bitmap photo = Bitmap.createBitmap(64, 48, Bitmap.Config.ARGB_8888).copy(Bitmap.Config.ARGB_8888, false);'
    grep -v '^import' "$work/readme1.java"
    echo 'System.out.println(Integer.toHexString(background.getPixel(60, 40))); } }'
} >"$work/Readme.java"
compile_java "$work/classes" "$work/Readme.java"
seen=$(java -Xcheck:jni -Djava.library.path="$build" -cp "$product:$work/classes" Readme)
# Transparent black, dimmed by 113 of 256 towards 0x102040.
[ "$seen" = 70e1c ] || fail "the README's code gives $seen"
