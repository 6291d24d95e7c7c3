# What cpack packs: Debian packages on Linux, a .zip for Windows.

set(CPACK_PACKAGE_NAME "quelt-data-migration")
set(CPACK_PACKAGE_VENDOR "The developers of QueltDataMigration")
set(CPACK_PACKAGE_CONTACT "The developers of QueltDataMigration <developers@quelt.invalid>")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_RESOURCE_FILE_README "${PROJECT_SOURCE_DIR}/README.md")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(CMAKE_SYSTEM_NAME STREQUAL "Windows")
    include(QueltPackageWindows)
elseif(CMAKE_SYSTEM_NAME STREQUAL "Linux")
    include(QueltPackageDebian)
endif()

include(CPack)
