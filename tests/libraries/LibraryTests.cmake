# What a host may rely on beyond what the libraries do. Each check tries specimens of its own first.
set(libraries "${CMAKE_CURRENT_SOURCE_DIR}/libraries")
if(NOT TARGET QueltDataMigration)
    return()
endif()

# What sanitizers put into the libraries may write and end the process. A DLL's imports are not listed: its objects are.
if(NOT QUELT_SANITIZE)
    add_test(NAME libraries.silent COMMAND Python3::Interpreter "${libraries}/check-silent.py"
        --nm "${CMAKE_NM}" --sink QueltInTraceSink
        "$<$<NOT:$<BOOL:${WIN32}>>:--library;$<TARGET_FILE:QueltCore>>" $<TARGET_OBJECTS:QueltCore>
        "$<$<NOT:$<BOOL:${WIN32}>>:--library;$<TARGET_FILE:QueltDataMigration>>" $<TARGET_OBJECTS:quelt-module-objects>
        COMMAND_EXPAND_LISTS)
endif()
if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
    return()
endif()

add_test(NAME libraries.unloadable COMMAND Python3::Interpreter "${libraries}/check-unloadable.py"
    --nm "${CMAKE_NM}" "${PROJECT_SOURCE_DIR}/core"
    $<TARGET_OBJECTS:QueltCore> $<TARGET_OBJECTS:quelt-module-objects>
    COMMAND_EXPAND_LISTS)

# The baselines are of this platform, and the comparison needs debug information.
if(CMAKE_BUILD_TYPE STREQUAL "Debug" AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    add_test(NAME libraries.abi COMMAND Python3::Interpreter "${libraries}/check-abi.py" "${libraries}/abi"
        --compiler "${CMAKE_CXX_COMPILER}"
        --libraries $<TARGET_FILE:QueltCore> $<TARGET_FILE:QueltDataMigration>)
endif()
