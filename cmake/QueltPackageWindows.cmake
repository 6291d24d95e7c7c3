# One .zip that runs where it is unpacked: the libraries of the compiler stand beside the programs.

set(CPACK_GENERATOR ZIP)

install(PROGRAMS ${QUELT_RUNTIME_LIBRARIES} DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT libraries)

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
