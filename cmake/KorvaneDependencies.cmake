# What the library stands on. Every package is installed by `./dev setup`.
find_package(Threads REQUIRED)
find_package(JPEG REQUIRED)
find_library(KORVANE_HWY_LIBRARY NAMES hwy REQUIRED)
set(KORVANE_JDK_HOME "/usr/lib/jvm/default-java" CACHE PATH "The JDK: jni.h, javac and the virtual machine of the tests")
if(ANDROID)
    find_path(KORVANE_JNI_INCLUDE_DIR jni.h REQUIRED)
else()
    find_path(KORVANE_JNI_INCLUDE_DIR jni.h PATHS "${KORVANE_JDK_HOME}/include" NO_DEFAULT_PATH REQUIRED)
endif()
set(KORVANE_JNI_INCLUDE_DIRS "${KORVANE_JNI_INCLUDE_DIR}")
if(NOT ANDROID)
    list(APPEND KORVANE_JNI_INCLUDE_DIRS "${KORVANE_JNI_INCLUDE_DIR}/linux")
endif()
find_library(KORVANE_EGL_LIBRARY NAMES EGL REQUIRED)
# Version 3 lies in a library of its own only for the linker of the Android NDK; elsewhere libGLESv2 has it.
find_library(KORVANE_GLES_LIBRARY NAMES GLESv3 GLESv2 REQUIRED)

target_include_directories(korvane_objects SYSTEM PRIVATE ${JPEG_INCLUDE_DIRS} ${KORVANE_JNI_INCLUDE_DIRS})
set(KORVANE_LINK_LIBRARIES Threads::Threads ${JPEG_LIBRARIES} ${KORVANE_HWY_LIBRARY} ${KORVANE_EGL_LIBRARY}
                           ${KORVANE_GLES_LIBRARY})
if(ANDROID)
    list(APPEND KORVANE_LINK_LIBRARIES log jnigraphics android)
endif()
