# SPDX-License-Identifier: Apache-2.0
# The version stands in the project line of CMakeLists.txt. From there it goes into korvane/version.h, which clients,
# the command line program and the package files read.
set(KORVANE_GENERATED_DIR "${PROJECT_BINARY_DIR}/generated")
configure_file(cmake/version.h.in "${KORVANE_GENERATED_DIR}/korvane/version.h" @ONLY)
