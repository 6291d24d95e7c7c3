# The API documentation as HTML pages, made from the public headers by scripts/build-api-docs.sh.

find_package(Doxygen REQUIRED)
include(GNUInstallDirs)

file(GLOB_RECURSE documented CONFIGURE_DEPENDS
    "${PROJECT_SOURCE_DIR}/core/*.h" "${PROJECT_SOURCE_DIR}/QueltDataMigration.m/include/*.h"
    "${PROJECT_SOURCE_DIR}/docs/api/*" "${PROJECT_SOURCE_DIR}/docs/compiled-format.md")
set(api_docs_folder "${PROJECT_BINARY_DIR}/api-docs")
add_custom_command(OUTPUT "${api_docs_folder}/html/index.html"
    COMMAND "${PROJECT_SOURCE_DIR}/scripts/build-api-docs.sh" "${api_docs_folder}" "${PROJECT_VERSION}"
    DEPENDS ${documented} "${PROJECT_SOURCE_DIR}/scripts/build-api-docs.sh"
    COMMENT "Building the API documentation"
    VERBATIM)
add_custom_target(quelt-api-docs ALL DEPENDS "${api_docs_folder}/html/index.html")

if(QUELT_INSTALL)
    install(DIRECTORY "${api_docs_folder}/html" DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT documentation)
endif()
