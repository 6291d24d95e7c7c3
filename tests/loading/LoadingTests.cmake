# Hosts that load the libraries at run time: one that links the core, and one that links neither.
quelt_add_test_executable(quelt-loading-tests loading/with-core Quelt::Core)
quelt_add_test_executable(quelt-apart-tests loading/apart GTest::gtest)
foreach(executable quelt-loading-tests quelt-apart-tests)
    if(TARGET ${executable} AND TARGET QueltDataMigration)
        target_sources(${executable} PRIVATE loading/support/Library.cpp)
        target_link_libraries(${executable} PRIVATE ${CMAKE_DL_LIBS})
        target_compile_definitions(${executable} PRIVATE
            "QUELT_CORE_FILE=\"$<TARGET_FILE:QueltCore>\"" "QUELT_MODULE_FILE=\"$<TARGET_FILE:QueltDataMigration>\"")
        add_dependencies(${executable} QueltCore QueltDataMigration)
    endif()
endforeach()
if(TARGET quelt-loading-tests)
    target_sources(quelt-loading-tests PRIVATE
        module/support/CompiledSamples.cpp module/support/LiveAllocations.cpp)
endif()
if(TARGET quelt-apart-tests)
    # For the size of an object that it has the core make.
    target_include_directories(quelt-apart-tests PRIVATE "${PROJECT_SOURCE_DIR}/core")
endif()
quelt_add_test(loading.withCore quelt-loading-tests plain)
quelt_add_test(loading.apart quelt-apart-tests plain)
