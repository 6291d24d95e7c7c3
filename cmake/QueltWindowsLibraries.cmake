# The libraries of the host application, for Windows: Debian has them for its own platform only. CLI11 consists of
# headers alone, which serve as they are; simdjson's sources come from Debian's source package
# (scripts/simdjson-source.sh). The tests' RapidJSON consists of headers, too.

set(libraries "${PROJECT_SOURCE_DIR}/build/sources")
set(headers "${PROJECT_BINARY_DIR}/headers")
if(NOT EXISTS "${libraries}/simdjson/simdjson.cpp")
    message(FATAL_ERROR "The sources of simdjson are missing; run scripts/setup.sh windows")
endif()

# Links to these two only: the folder that they stand in holds the headers of another platform as well.
file(MAKE_DIRECTORY "${headers}")
foreach(library CLI rapidjson)
    if(NOT EXISTS "/usr/include/${library}")
        message(FATAL_ERROR "The headers of ${library} are missing; run scripts/setup.sh windows")
    endif()
    file(CREATE_LINK "/usr/include/${library}" "${headers}/${library}" SYMBOLIC)
endforeach()
add_library(CLI11::CLI11 INTERFACE IMPORTED)
target_include_directories(CLI11::CLI11 INTERFACE "${headers}")
add_library(RapidJSON INTERFACE IMPORTED GLOBAL)
target_include_directories(RapidJSON INTERFACE "${headers}")

add_library(simdjson STATIC "${libraries}/simdjson/simdjson.cpp")
add_library(simdjson::simdjson ALIAS simdjson)
target_include_directories(simdjson SYSTEM PUBLIC "${libraries}/simdjson")
target_compile_options(simdjson PRIVATE -w)
