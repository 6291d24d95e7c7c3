# The documentation: that of the libraries, and manual page and completions of quelt-migrate.

if(CMAKE_CROSSCOMPILING)
    return() # what is written for readers does not depend on the platform
endif()

if(TARGET QueltDataMigration)
    # The program that the main page of the API documentation shows.
    add_executable(quelt-api-example "${PROJECT_SOURCE_DIR}/docs/api/convert-one.cpp")
    target_link_libraries(quelt-api-example PRIVATE Quelt::DataMigration)
    add_test(NAME house.api-docs
        COMMAND Python3::Interpreter "${CMAKE_CURRENT_SOURCE_DIR}/house/check-api-docs.py" "${PROJECT_SOURCE_DIR}"
            $<TARGET_FILE:quelt-api-example>)
    set_tests_properties(house.api-docs PROPERTIES
        ENVIRONMENT_MODIFICATION "${environment_plain};QUELT_TRACE=unset:")
endif()

if(TARGET quelt-migrate-docs)
    add_test(NAME house.command-docs
        COMMAND Python3::Interpreter "${CMAKE_CURRENT_SOURCE_DIR}/house/check-command-docs.py"
            $<TARGET_FILE:quelt-migrate> "${PROJECT_BINARY_DIR}/command-docs")
endif()
