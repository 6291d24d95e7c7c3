# Installs the two libraries with their public headers, so that another project can say
# find_package(QueltDataMigration), or ask pkg-config, and link them; the host application; and the documents. An
# installed tree may be moved: whatever is in it finds the rest from where it stands itself.
#
# The components: program, libraries (what runs), development (what compiles and links), documentation.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# The way from one folder of the installed tree to another. An absolute folder is outside of the tree and stays.
function(quelt_relative_path variable from to)
    set(path "${to}")
    if(NOT IS_ABSOLUTE "${to}")
        file(RELATIVE_PATH path "/prefix/${from}" "/prefix/${to}")
    endif()
    set(${variable} "${path}" PARENT_SCOPE)
endfunction()

install(TARGETS QueltCore QueltDataMigration EXPORT QueltDataMigrationTargets
    RUNTIME COMPONENT libraries
    LIBRARY COMPONENT libraries NAMELINK_COMPONENT development
    ARCHIVE COMPONENT development
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quelt" COMPONENT development)
if(TARGET quelt-migrate)
    install(TARGETS quelt-migrate RUNTIME COMPONENT program)
endif()
if(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    set_target_properties(QueltDataMigration PROPERTIES INSTALL_RPATH "$ORIGIN")
    if(TARGET quelt-migrate)
        quelt_relative_path(libraries "${CMAKE_INSTALL_BINDIR}" "${CMAKE_INSTALL_LIBDIR}")
        set_target_properties(quelt-migrate PROPERTIES INSTALL_RPATH "$ORIGIN/${libraries}")
    endif()
endif()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/QueltDataMigration")
set(package_files "${PROJECT_BINARY_DIR}/package")
install(EXPORT QueltDataMigrationTargets NAMESPACE Quelt:: DESTINATION "${package_folder}" COMPONENT development)
configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/QueltDataMigrationConfig.cmake.in"
    "${package_files}/QueltDataMigrationConfig.cmake" INSTALL_DESTINATION "${package_folder}"
    NO_SET_AND_CHECK_MACRO)
# Before 1.0.0 a minor version may change the interface.
write_basic_package_version_file("${package_files}/QueltDataMigrationConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${package_files}/QueltDataMigrationConfig.cmake"
    "${package_files}/QueltDataMigrationConfigVersion.cmake"
    DESTINATION "${package_folder}" COMPONENT development)

set(pkgconfig_folder "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
quelt_relative_path(relative_prefix "${pkgconfig_folder}" "")
foreach(folder IN ITEMS INCLUDEDIR LIBDIR)
    set(path_${folder} "${CMAKE_INSTALL_${folder}}")
    if(NOT IS_ABSOLUTE "${path_${folder}}")
        string(PREPEND path_${folder} "\${prefix}/")
    endif()
endforeach()
foreach(library IN ITEMS quelt-core quelt-data-migration)
    configure_file("${CMAKE_CURRENT_LIST_DIR}/${library}.pc.in" "${package_files}/${library}.pc" @ONLY)
    install(FILES "${package_files}/${library}.pc" DESTINATION "${pkgconfig_folder}" COMPONENT development)
endforeach()

install(FILES README.md CHANGELOG.md LICENSE COPYRIGHT
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
install(DIRECTORY docs examples DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation
    FILES_MATCHING PATTERN "*.md" PATTERN "*.cpp" PATTERN "*.json" PATTERN "*.ndjson")
