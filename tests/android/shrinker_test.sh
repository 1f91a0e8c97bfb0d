#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# Shrinks an app with our keep rules and without them, runs both, and sees the difference.
# usage: shrinker_test.sh SOURCE_DIR BUILD_DIR JDK_HOME
# shellcheck source=tests/android/set_up.sh
. "$(dirname "${BASH_SOURCE[0]}")/set_up.sh"

jar=$build/java/korvane.jar
standins=$build/java/korvane_standins.jar
javac --release 8 -Xlint:-options -cp "$jar" -d "$work/app" "$source/tests/android/ShrunkApp.java"
jar --create --file "$work/app.jar" -C "$work/app" .

# Java's own classes as of version 8: newer ones are not for this ProGuard to read.
python3 - "$jdk/lib/ct.sym" "$work/java8.jar" <<'PYTHON'
import sys
import zipfile

PACKAGES = ("java/io/", "java/lang/", "java/nio/", "java/util/")
with zipfile.ZipFile(sys.argv[1]) as signatures, zipfile.ZipFile(sys.argv[2], "w") as classes:
    for name in signatures.namelist():
        versions, _, path = name.partition("/java.base/")
        if "8" in versions and path.startswith(PACKAGES) and path.endswith(".sig"):
            signature = signatures.read(name)
            # They bear the version of the JDK that holds them.
            classes.writestr(path[:-len(".sig")] + ".class", signature[:6] + b"\0\x34" + signature[8:])
PYTHON

# What Android's own rules say of native methods stands in both.
shrink() {
    proguard -injars "$work/app.jar:$jar" -outjars "$work/$1.jar" -libraryjars "$work/java8.jar:$standins" \
        -keep 'public class ShrunkApp { public static void main(java.lang.String[]); }' \
        -keepclasseswithmembernames 'class * { native <methods>; }' \
        -allowaccessmodification -optimizationpasses 3 "${@:2}" >"$work/$1.log" || {
        cat "$work/$1.log"
        exit 1
    }
    java -Djava.library.path="$build" -cp "$work/$1.jar:$standins" ShrunkApp
}

shrink with -include "$source/packaging/android/proguard.txt" >"$work/seen"
diff "$work/seen" - <<<$'advice: 22.0 -2\noffsets: 70 45\nadvisor: 22.0 -2'
shrink without >"$work/seen"
diff "$work/seen" - <<<$'advice: none\noffsets: 0 0'
