# Settings that hold for every target of the project, and for none of a project that takes this one in.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_COMPILE_WARNING_AS_ERROR "${QUELT_WARNINGS_AS_ERRORS}")
# Sources have names of their own in unnamed namespaces, which would meet if a project that takes this one in joined them.
set(CMAKE_UNITY_BUILD OFF)
# No absolute path gets into a binary, wherever it is built.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)

# Where things go, and how they are built when nothing is said, is the business of whoever is on top.
if(PROJECT_IS_TOP_LEVEL)
    set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
    if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
        set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
    endif()
    find_program(QUELT_CCACHE ccache)
    if(QUELT_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
        set(CMAKE_CXX_COMPILER_LAUNCHER "${QUELT_CCACHE}")
    endif()
endif()

add_compile_options(
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    -fno-semantic-interposition
    # Unique symbols would keep a library that was loaded at run time from ever being unloaded.
    "$<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>"
    # Trace lines name source files by their path in the repository, wherever it was built.
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")

# GCC 12 sees overlapping copies inside its own std::string where there are none.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    add_compile_options(-Wno-restrict)
endif()

add_compile_definitions("$<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>")

if(WIN32)
    # Visits nest on the stack, deeper than the platform's default of 1 MB allows; threads get as much as the program.
    # No time of the build gets into a binary.
    add_link_options(LINKER:--stack,8388608 LINKER:--no-insert-timestamp)
endif()

if(QUELT_SANITIZE)
    add_compile_options(
        "-fsanitize=${QUELT_SANITIZE}" -fno-sanitize-recover=all -fno-omit-frame-pointer -O1)
    add_link_options("-fsanitize=${QUELT_SANITIZE}")
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        # The checks that the sanitizers insert hide assignments from this warning.
        add_compile_options(-Wno-maybe-uninitialized)
    endif()
elseif(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    add_link_options(LINKER:--no-undefined)
endif()
