# SPDX-License-Identifier: Apache-2.0
# What the library stands on. Every package is installed by `./dev setup`.
find_package(Threads REQUIRED)
find_package(JPEG REQUIRED)
find_path(KORVANE_HWY_INCLUDE_DIR hwy/highway.h REQUIRED)
find_library(KORVANE_HWY_LIBRARY NAMES hwy REQUIRED)
find_library(KORVANE_EGL_LIBRARY NAMES EGL REQUIRED)
# Version 3 lies in a library of its own only for the linker of the Android NDK; elsewhere libGLESv2 has it.
find_library(KORVANE_GLES_LIBRARY NAMES GLESv3 GLESv2 REQUIRED)

# The JNI entries need jni.h and no other part of a JDK. The NDK brings its own.
set(KORVANE_JDK_HOME "/usr/lib/jvm/default-java" CACHE PATH "The JDK: jni.h, javac and the virtual machine of the tests")
if(NOT ANDROID)
    file(GLOB jdks /usr/lib/jvm/*/include /opt/java/*/include)
    find_path(KORVANE_JNI_INCLUDE_DIR jni.h PATHS "${KORVANE_JDK_HOME}/include" "$ENV{JAVA_HOME}/include" ${jdks}
              NO_DEFAULT_PATH)
endif()
find_path(KORVANE_JNI_INCLUDE_DIR jni.h)
if(NOT KORVANE_JNI_INCLUDE_DIR)
    message(FATAL_ERROR "korvane: jni.h was found neither below KORVANE_JDK_HOME (${KORVANE_JDK_HOME}), JAVA_HOME and "
                        "/usr/lib/jvm nor among the system's headers. Install a JDK (on Debian: default-jdk-headless) or "
                        "set KORVANE_JNI_INCLUDE_DIR to the folder of a jni.h.")
endif()
set(KORVANE_JNI_INCLUDE_DIRS "${KORVANE_JNI_INCLUDE_DIR}")
# A JDK keeps jni_md.h, which its jni.h includes, in a folder named after the system.
if(EXISTS "${KORVANE_JNI_INCLUDE_DIR}/linux/jni_md.h")
    list(APPEND KORVANE_JNI_INCLUDE_DIRS "${KORVANE_JNI_INCLUDE_DIR}/linux")
endif()

set(KORVANE_INCLUDE_DIRS ${KORVANE_HWY_INCLUDE_DIR} ${JPEG_INCLUDE_DIRS} ${KORVANE_JNI_INCLUDE_DIRS})
target_include_directories(korvane_objects SYSTEM PRIVATE ${KORVANE_INCLUDE_DIRS})
set(KORVANE_LINK_LIBRARIES Threads::Threads ${JPEG_LIBRARIES} ${KORVANE_HWY_LIBRARY} ${KORVANE_EGL_LIBRARY}
                           ${KORVANE_GLES_LIBRARY})
if(ANDROID)
    list(APPEND KORVANE_LINK_LIBRARIES log jnigraphics android)
endif()
