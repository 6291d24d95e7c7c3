# GoogleTest for Windows, from the sources that Debian's package googletest installs.

set(INSTALL_GTEST OFF)
set(CMAKE_CXX_STANDARD 20)
add_subdirectory(/usr/src/googletest "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)
unset(CMAKE_CXX_STANDARD)
