# Helpers that give every library of the project the same shape: sources under src/, public
# headers under include/, an alias ServiceDB::<name>, and an entry in the exported package.

set(SERVICEDB_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/ServiceDB")
set(SERVICEDB_INSTALL_CMAKEDIR "${CMAKE_INSTALL_LIBDIR}/cmake/ServiceDB")

function(servicedb_compile_options target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic)
    if(SERVICEDB_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(SERVICEDB_SANITIZE)
        target_compile_options(${target} PRIVATE -fsanitize=${SERVICEDB_SANITIZE} -fno-omit-frame-pointer
                                                 -fno-sanitize-recover=all)
        target_link_options(${target} PUBLIC -fsanitize=${SERVICEDB_SANITIZE})
    endif()
endfunction()

# servicedb_add_library(<name> DEPENDS <targets...>)
function(servicedb_add_library name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "DEPENDS")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/src/*.cpp")
    file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/include/*.h")
    add_library(${name} ${sources} ${headers})
    add_library(ServiceDB::${name} ALIAS ${name})
    target_include_directories(${name} PUBLIC
        "$<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}/include>"
        "$<INSTALL_INTERFACE:${SERVICEDB_INSTALL_INCLUDEDIR}>")
    # Headers of classes that only the library itself uses live beside their sources.
    target_include_directories(${name} PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/src")
    target_link_libraries(${name} PUBLIC ${ARG_DEPENDS})
    set_target_properties(${name} PROPERTIES
        EXPORT_NAME ${name}
        POSITION_INDEPENDENT_CODE ON
        INSTALL_RPATH "$ORIGIN"
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    servicedb_compile_options(${name})

    install(TARGETS ${name} EXPORT ServiceDBTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/include/" DESTINATION ${SERVICEDB_INSTALL_INCLUDEDIR})

    if(SERVICEDB_BUILD_TESTS AND EXISTS "${CMAKE_CURRENT_SOURCE_DIR}/test")
        servicedb_add_test(${name}Test DEPENDS ${name})
        target_include_directories(${name}Test PRIVATE "${CMAKE_CURRENT_SOURCE_DIR}/src")
    endif()
endfunction()

# servicedb_add_test(<name> DEPENDS <targets...>): one GoogleTest executable from test/*.cpp.
function(servicedb_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "" "DEPENDS")
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/test/*.cpp")
    if(NOT sources)
        return()
    endif()
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE ${ARG_DEPENDS} ServiceDB::TestSupport GTest::gtest GTest::gmock
                                          GTest::gtest_main)
    servicedb_compile_options(${name})
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
endfunction()

function(servicedb_install_package)
    install(EXPORT ServiceDBTargets NAMESPACE ServiceDB:: DESTINATION ${SERVICEDB_INSTALL_CMAKEDIR})
    configure_package_config_file(
        "${PROJECT_SOURCE_DIR}/cmake/ServiceDBConfig.cmake.in"
        "${PROJECT_BINARY_DIR}/ServiceDBConfig.cmake"
        INSTALL_DESTINATION ${SERVICEDB_INSTALL_CMAKEDIR})
    write_basic_package_version_file(
        "${PROJECT_BINARY_DIR}/ServiceDBConfigVersion.cmake"
        COMPATIBILITY SameMinorVersion)
    install(FILES
        "${PROJECT_BINARY_DIR}/ServiceDBConfig.cmake"
        "${PROJECT_BINARY_DIR}/ServiceDBConfigVersion.cmake"
        DESTINATION ${SERVICEDB_INSTALL_CMAKEDIR})
endfunction()
