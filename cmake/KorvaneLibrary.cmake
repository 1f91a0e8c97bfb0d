# SPDX-License-Identifier: Apache-2.0
# libkorvane.so for clients, and the same objects as an internal static library for tests of private parts.
add_library(korvane SHARED)
add_library(korvane::korvane ALIAS korvane)
target_link_libraries(korvane PRIVATE korvane_objects ${KORVANE_LINK_LIBRARIES})
target_compile_features(korvane INTERFACE cxx_std_20)
target_include_directories(korvane INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
                                             $<BUILD_INTERFACE:${KORVANE_GENERATED_DIR}>)
set(version_script "${PROJECT_SOURCE_DIR}/cmake/korvane.map")
target_link_options(korvane PRIVATE "LINKER:--version-script=${version_script}" "LINKER:-z,max-page-size=16384"
                                    "LINKER:--no-undefined")
# What nothing calls is left out, above all of static libraries; the build id leads from a crash to the symbols.
target_link_options(korvane PRIVATE "LINKER:--gc-sections" "LINKER:--build-id")
if(KORVANE_SANITIZE)
    # The sanitizers' runtime lives in the executable; a shared library leaves its symbols open.
    get_target_property(options korvane LINK_OPTIONS)
    list(REMOVE_ITEM options "LINKER:--no-undefined")
    set_target_properties(korvane PROPERTIES LINK_OPTIONS "${options}")
    target_link_options(korvane PRIVATE -fsanitize=${KORVANE_SANITIZE})
endif()
set_target_properties(korvane PROPERTIES LINK_DEPENDS "${version_script}")

add_library(korvane_static STATIC EXCLUDE_FROM_ALL)
target_link_libraries(korvane_static PRIVATE korvane_objects PUBLIC ${KORVANE_LINK_LIBRARIES})
target_include_directories(korvane_static PUBLIC "${PROJECT_SOURCE_DIR}" "${KORVANE_GENERATED_DIR}")
target_include_directories(korvane_static SYSTEM PUBLIC ${KORVANE_INCLUDE_DIRS})

# What clients may include; read by `./dev docs`.
get_property(KORVANE_PUBLIC_HEADERS GLOBAL PROPERTY KORVANE_PUBLIC_HEADERS)
list(APPEND KORVANE_PUBLIC_HEADERS "${KORVANE_GENERATED_DIR}/korvane/version.h")
list(JOIN KORVANE_PUBLIC_HEADERS "\n" lines)
file(WRITE "${KORVANE_GENERATED_DIR}/public_headers.txt" "${lines}\n")
