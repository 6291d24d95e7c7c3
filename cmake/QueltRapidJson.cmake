# The tests and the fuzz targets read answers with another library than the one that the application reads with: the target
# RapidJSON, which consists of headers.
if(NOT TARGET RapidJSON)
    find_package(RapidJSON REQUIRED)
    add_library(RapidJSON INTERFACE IMPORTED GLOBAL)
    target_include_directories(RapidJSON INTERFACE ${RAPIDJSON_INCLUDE_DIRS})
endif()
