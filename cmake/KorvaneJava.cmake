# SPDX-License-Identifier: Apache-2.0
# The Java compiler is the one of the JDK whose jni.h and virtual machine are used.
set(Java_JAVA_EXECUTABLE "${KORVANE_JDK_HOME}/bin/java")
set(Java_JAVAC_EXECUTABLE "${KORVANE_JDK_HOME}/bin/javac")
set(Java_JAR_EXECUTABLE "${KORVANE_JDK_HOME}/bin/jar")
find_package(Java 11 REQUIRED COMPONENTS Runtime Development)
include(UseJava)
set(CMAKE_JAVA_COMPILE_FLAGS --release 11 -Xlint:all)
