# libkorvane.so for clients, and the same objects as an internal static library for tests of private parts.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

add_library(korvane SHARED)
target_link_libraries(korvane PRIVATE korvane_objects ${KORVANE_LINK_LIBRARIES})
target_include_directories(korvane INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/korvane>
                                             $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
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
target_include_directories(korvane_static PUBLIC "${PROJECT_SOURCE_DIR}")
target_include_directories(korvane_static SYSTEM PUBLIC ${KORVANE_JNI_INCLUDE_DIRS} ${JPEG_INCLUDE_DIRS})

install(TARGETS korvane EXPORT korvaneTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
get_property(public_headers GLOBAL PROPERTY KORVANE_PUBLIC_HEADERS)
foreach(header IN LISTS public_headers)
    cmake_path(RELATIVE_PATH header BASE_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE relative)
    cmake_path(GET relative PARENT_PATH folder)
    install(FILES "${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/korvane/${folder}")
endforeach()
install(EXPORT korvaneTargets NAMESPACE korvane:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/korvane)
configure_package_config_file(cmake/korvaneConfig.cmake.in korvaneConfig.cmake
                              INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/korvane)
write_basic_package_version_file(korvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/korvaneConfig.cmake" "${CMAKE_CURRENT_BINARY_DIR}/korvaneConfigVersion.cmake"
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/korvane)
# The file finds its folder's siblings by itself, so that `cmake --install --prefix` may put the copy anywhere.
file(RELATIVE_PATH KORVANE_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/korvane.pc.in korvane.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/korvane.pc" DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
