# SPDX-License-Identifier: Apache-2.0
# `cmake --install`: the library, the public headers in their folders, the CMake package and the pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The folder below the include folder keeps our header names apart from those of other packages.
set(include_dir "${CMAKE_INSTALL_INCLUDEDIR}/korvane")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/korvane")

install(TARGETS korvane EXPORT korvaneTargets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
        INCLUDES DESTINATION "${include_dir}")
get_property(public_headers GLOBAL PROPERTY KORVANE_PUBLIC_HEADERS)
foreach(header IN LISTS public_headers)
    cmake_path(RELATIVE_PATH header BASE_DIRECTORY "${PROJECT_SOURCE_DIR}" OUTPUT_VARIABLE relative)
    cmake_path(GET relative PARENT_PATH folder)
    install(FILES "${header}" DESTINATION "${include_dir}/${folder}")
endforeach()
install(FILES "${KORVANE_GENERATED_DIR}/korvane/version.h" DESTINATION "${include_dir}/korvane")

install(EXPORT korvaneTargets NAMESPACE korvane:: DESTINATION "${package_dir}")
configure_package_config_file(cmake/korvaneConfig.cmake.in korvaneConfig.cmake INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file(korvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/korvaneConfig.cmake" "${CMAKE_CURRENT_BINARY_DIR}/korvaneConfigVersion.cmake"
        DESTINATION "${package_dir}")

# The file finds its folder's siblings by itself, so that `cmake --install --prefix` may put the copy anywhere.
file(RELATIVE_PATH KORVANE_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file(cmake/korvane.pc.in korvane.pc @ONLY)
install(FILES "${CMAKE_CURRENT_BINARY_DIR}/korvane.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
