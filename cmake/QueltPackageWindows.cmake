# One .zip that runs where it is unpacked: the libraries of the compiler stand beside the programs.

set(CPACK_GENERATOR ZIP)

# The file that the compiler would link by this name; it answers with the bare name when there is none.
function(quelt_compiler_file variable name)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${name}"
        OUTPUT_VARIABLE path OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(NOT IS_ABSOLUTE "${path}" OR NOT EXISTS "${path}")
        message(FATAL_ERROR "${CMAKE_CXX_COMPILER} does not know where ${name} is, which the package must contain")
    endif()
    get_filename_component(path "${path}" REALPATH)
    set(${variable} "${path}" PARENT_SCOPE)
endfunction()

foreach(name IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    quelt_compiler_file(file ${name})
    # Without what only debuggers want, which is nine tenths of it.
    execute_process(COMMAND "${CMAKE_STRIP}" -o "${package_files}/${name}" "${file}" COMMAND_ERROR_IS_FATAL ANY)
    install(PROGRAMS "${package_files}/${name}" DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT libraries)
endforeach()

set(QUELT_RUNTIME_LICENSES
    /usr/share/doc/gcc-mingw-w64-base/copyright /usr/share/doc/mingw-w64-x86-64-dev/copyright
    /usr/share/common-licenses/GPL-3
    CACHE STRING "The licences of the compiler's libraries")
foreach(file IN LISTS QUELT_RUNTIME_LICENSES)
    if(NOT EXISTS "${file}")
        message(FATAL_ERROR "No ${file}; QUELT_RUNTIME_LICENSES must name the licences of the compiler's libraries")
    endif()
    # Named after the folder, too, since all of Debian's have the same name.
    get_filename_component(folder "${file}" DIRECTORY)
    get_filename_component(folder "${folder}" NAME)
    get_filename_component(name "${file}" NAME)
    install(FILES "${file}" DESTINATION "${CMAKE_INSTALL_DOCDIR}/runtime-licenses" RENAME "${folder}-${name}.txt"
        COMPONENT libraries)
endforeach()
