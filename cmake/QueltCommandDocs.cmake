# The manual page of quelt-migrate and its completions for bash, zsh and fish, written by a program that has the command
# line's declaration from quelt-migrate itself; so not where that program cannot run.

if(CMAKE_CROSSCOMPILING)
    return()
endif()

add_executable(quelt-migrate-docs "${PROJECT_SOURCE_DIR}/host/documentation/main.cpp")
target_link_libraries(quelt-migrate-docs PRIVATE quelt-host)

set(command_docs_folder "${PROJECT_BINARY_DIR}/command-docs")
set(command_docs quelt-migrate.1 quelt-migrate.bash _quelt-migrate quelt-migrate.fish)
list(TRANSFORM command_docs PREPEND "${command_docs_folder}/")
file(MAKE_DIRECTORY "${command_docs_folder}")
add_custom_command(OUTPUT ${command_docs}
    COMMAND quelt-migrate-docs "${command_docs_folder}"
    DEPENDS quelt-migrate-docs
    COMMENT "Writing the manual page and the completions of quelt-migrate"
    VERBATIM)
add_custom_target(quelt-migrate-pages ALL DEPENDS ${command_docs})

if(QUELT_INSTALL AND NOT WIN32)
    include(GNUInstallDirs)
    install(FILES "${command_docs_folder}/quelt-migrate.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
        COMPONENT program)
    install(FILES "${command_docs_folder}/quelt-migrate.bash"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/bash-completion/completions" RENAME quelt-migrate
        COMPONENT program)
    install(FILES "${command_docs_folder}/_quelt-migrate"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/zsh/site-functions" COMPONENT program)
    install(FILES "${command_docs_folder}/quelt-migrate.fish"
        DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/fish/vendor_completions.d" COMPONENT program)
endif()
