# SPDX-License-Identifier: Apache-2.0
# korvane_sources(PUBLIC_HEADERS ... SOURCES ...): adds a folder's files to the library. Public headers are installed;
# everything else under SOURCES stays inside. Lists are explicit so that a stray file never reaches a build.
function(korvane_sources)
    cmake_parse_arguments(arg "" "" "PUBLIC_HEADERS;SOURCES" ${ARGN})
    list(TRANSFORM arg_PUBLIC_HEADERS PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/")
    target_sources(korvane_objects PRIVATE ${arg_SOURCES} ${arg_PUBLIC_HEADERS})
    set_property(GLOBAL APPEND PROPERTY KORVANE_PUBLIC_HEADERS ${arg_PUBLIC_HEADERS})
endfunction()
