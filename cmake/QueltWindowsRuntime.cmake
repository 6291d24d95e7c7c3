# The compiler's own libraries, beside the programs, where Windows looks for them. QUELT_RUNTIME_LIBRARIES are the copies.

set(QUELT_RUNTIME_LIBRARIES "")
foreach(name IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    # Answers with the bare name when there is none.
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${name}"
        OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    if(NOT IS_ABSOLUTE "${file}" OR NOT EXISTS "${file}")
        message(FATAL_ERROR "${CMAKE_CXX_COMPILER} does not know where ${name} is, which the programs need")
    endif()
    set(copy "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${name}")
    # Without what only debuggers want, which is nine tenths of it.
    file(MAKE_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
    execute_process(COMMAND "${CMAKE_STRIP}" -o "${copy}" "${file}" COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND QUELT_RUNTIME_LIBRARIES "${copy}")
endforeach()
