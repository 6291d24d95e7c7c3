# Four packages, one a component: quelt-migrate, libquelt0, libquelt-dev and quelt-doc. With the prefix /usr, libraries go
# into the folder of the architecture.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Where dpkg-shlibdeps finds the libraries that the program and the module link, before they are installed.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# Each package has a summary of its own, in front of which this one would come.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(about "Manufacturers keep, for every part and every change of a configurable
product, an effectivity: a boolean expression that says in which products
it applies. Older stores hold it as specification lists, trees and compiled
binaries; these are converted into the multi-model form, in which each
model dictionary has a criterion of its own.")
set(soname "libquelt${PROJECT_VERSION_MAJOR}")
set(same_version "(= ${PROJECT_VERSION})")

# Names the package of a component, and gives it what every package of Debian documents itself with.
function(quelt_debian_package component name section summary details)
    string(TOUPPER "CPACK_DEBIAN_${component}" variables)
    set(${variables}_PACKAGE_NAME "${name}" PARENT_SCOPE)
    set(${variables}_PACKAGE_SECTION "${section}" PARENT_SCOPE)
    set(${variables}_DESCRIPTION "${summary}\n${about}\n\n${details}" PARENT_SCOPE)

    install(FILES "${PROJECT_SOURCE_DIR}/COPYRIGHT" RENAME copyright
        DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${name}" COMPONENT ${component} EXCLUDE_FROM_ALL)
    if(EXISTS "${package_files}/changelog.gz")
        install(FILES "${package_files}/changelog.gz"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${name}" COMPONENT ${component} EXCLUDE_FROM_ALL)
    endif()
endfunction()

find_program(QUELT_GZIP gzip)
if(QUELT_GZIP)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS CHANGELOG.md)
    execute_process(COMMAND "${QUELT_GZIP}" -9nc "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
        OUTPUT_FILE "${package_files}/changelog.gz" COMMAND_ERROR_IS_FATAL ANY)
endif()

quelt_debian_package(libraries ${soname} libs "conversion of configuration effectivity (libraries)"
    "This package contains the shared libraries QueltCore and QueltDataMigration.")
quelt_debian_package(development libquelt-dev libdevel "conversion of configuration effectivity (development)"
    "This package contains what a C++20 program is compiled and linked with to
use the libraries: headers, a CMake package and pkg-config files.")
quelt_debian_package(documentation quelt-doc doc "conversion of configuration effectivity (documentation)"
    "This package contains the documentation of the libraries and of
quelt-migrate, with examples.")
set(CPACK_COMPONENTS_ALL libraries development documentation)

set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY "=")
# CPack itself tells the loader of new libraries in /usr/lib only, not in the folder of the architecture.
set(CPACK_DEBIAN_LIBRARIES_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_LIST_DIR}/debian/triggers")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${soname} ${same_version}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "quelt-doc")
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SHLIBDEPS OFF)

if(TARGET quelt-migrate)
    quelt_debian_package(program quelt-migrate utils "converts stores of configuration effectivity"
        "This package contains quelt-migrate, which converts a whole store record
by record.")
    list(APPEND CPACK_COMPONENTS_ALL program)
    set(CPACK_DEBIAN_PROGRAM_PACKAGE_DEPENDS "${soname} ${same_version}")
    set(CPACK_DEBIAN_PROGRAM_PACKAGE_SUGGESTS "quelt-doc")
endif()
