# Installs the two libraries with their public headers, so that another project can say
# find_package(QueltDataMigration) and link Quelt::DataMigration; and the host application.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS QueltCore QueltDataMigration EXPORT QueltDataMigrationTargets
    FILE_SET HEADERS DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quelt")
if(TARGET quelt-migrate)
    install(TARGETS quelt-migrate)
endif()

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/QueltDataMigration")
install(EXPORT QueltDataMigrationTargets NAMESPACE Quelt:: DESTINATION "${package_folder}"
    FILE QueltDataMigrationConfig.cmake)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QueltDataMigrationConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/QueltDataMigrationConfigVersion.cmake" DESTINATION "${package_folder}")
