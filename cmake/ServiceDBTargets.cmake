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

# What is installed is built as Debian hardens its packages: checked buffer functions where the compiler
# optimises, and relocations read-only once loaded.
function(servicedb_harden target)
    target_compile_definitions(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:_FORTIFY_SOURCE=2>)
    target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
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
    servicedb_harden(${name})

    install(TARGETS ${name} EXPORT ServiceDBTargets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
    install(DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}/include/" DESTINATION ${SERVICEDB_INSTALL_INCLUDEDIR}
        COMPONENT dev)
    set_property(GLOBAL APPEND PROPERTY SERVICEDB_LIBRARIES ${name})

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
    # Test code is compiled far more often than it runs, so it is built without optimisation in every
    # build type (that halves the build); the libraries under test keep the build type's flags.
    target_compile_options(${name} PRIVATE -O0)
    # Most test files read the same headers; reading them once for all saves a fifth of each compile.
    target_precompile_headers(${name} PRIVATE <gmock/gmock.h> <gtest/gtest.h> <Poco/Dynamic/Var.h>
                              <Poco/Exception.h> <Poco/JSON/Object.h> <string> <vector>)
    if(CMAKE_CROSSCOMPILING OR SERVICEDB_SANITIZE)
        # Under emulation or a sanitizer every process start costs a tenth to a third of a second, which
        # would be most of the run with one process a test; so each suite runs whole, as one test.
        add_test(NAME ${name} COMMAND ${name})
        set_tests_properties(${name} PROPERTIES TIMEOUT 1200)
    else()
        gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60)
    endif()
endfunction()

# servicedb_install_tool(<target> DEFINITIONS <folder> INTO <name>): installs a program with the definition
# files it comes with, which it finds in <datadir>/servicedb/<name> beside its own folder
# (see BundledDefinitions).
function(servicedb_install_tool target)
    cmake_parse_arguments(PARSE_ARGV 1 ARG "" "DEFINITIONS;INTO;MACRO" "")
    set(definitions "${CMAKE_INSTALL_DATADIR}/servicedb/${ARG_INTO}")
    file(RELATIVE_PATH fromProgram "/${CMAKE_INSTALL_BINDIR}" "/${definitions}")
    target_compile_definitions(${target} PRIVATE
        ${ARG_MACRO}_DEFINITIONS_DIR="${ARG_DEFINITIONS}"
        ${ARG_MACRO}_INSTALLED_DEFINITIONS_DIR="${fromProgram}")
    # Installed programs find the libraries beside them or in the system's folders.
    file(RELATIVE_PATH toLibraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN/${toLibraries}")
    servicedb_harden(${target})
    install(TARGETS ${target} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    install(DIRECTORY "${ARG_DEFINITIONS}/" DESTINATION ${definitions} COMPONENT tools)
    servicedb_gzip("${PROJECT_SOURCE_DIR}/docs/man/${target}.1" manPage)
    install(FILES "${manPage}" DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endfunction()

# servicedb_gzip(<file> <variable>): compresses the file into the build folder, without a time stamp as
# Debian wants it, and names the result in <variable>.
function(servicedb_gzip file variable)
    find_program(SERVICEDB_GZIP gzip REQUIRED)
    get_filename_component(name "${file}" NAME)
    set(compressed "${CMAKE_CURRENT_BINARY_DIR}/gzip/${name}.gz")
    file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/gzip")
    execute_process(COMMAND "${SERVICEDB_GZIP}" -9 -n -c "${file}" OUTPUT_FILE "${compressed}"
        COMMAND_ERROR_IS_FATAL ANY)
    set(${variable} "${compressed}" PARENT_SCOPE)
endfunction()

function(servicedb_install_package)
    install(EXPORT ServiceDBTargets NAMESPACE ServiceDB:: DESTINATION ${SERVICEDB_INSTALL_CMAKEDIR} COMPONENT dev)
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
        DESTINATION ${SERVICEDB_INSTALL_CMAKEDIR}
        COMPONENT dev)
    servicedb_install_pkg_config()
endfunction()

# The same libraries for builds that use pkg-config. The file finds its prefix from its own folder, so
# that it holds wherever the package is installed.
function(servicedb_install_pkg_config)
    set(pkgConfigDir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
    file(RELATIVE_PATH PC_PREFIX "/${pkgConfigDir}" "/")
    string(REGEX REPLACE "/$" "" PC_PREFIX "${PC_PREFIX}")
    get_property(libraries GLOBAL PROPERTY SERVICEDB_LIBRARIES)
    list(REVERSE libraries)
    list(TRANSFORM libraries PREPEND "-l")
    list(JOIN libraries " " PC_LIBRARIES)
    # POCO's headers expect the definitions its own build used; they are generator expressions, so the
    # file is finished at generation time.
    set(pocoDefinitions "")
    foreach(poco IN ITEMS Poco::Foundation Poco::Net Poco::JSON)
        list(APPEND pocoDefinitions "$<TARGET_PROPERTY:${poco},INTERFACE_COMPILE_DEFINITIONS>")
    endforeach()
    set(PC_DEFINITIONS "-D$<JOIN:$<FILTER:$<REMOVE_DUPLICATES:${pocoDefinitions}>,EXCLUDE,^$>, -D>")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/servicedb.pc.in" "${PROJECT_BINARY_DIR}/servicedb.pc.in" @ONLY)
    file(GENERATE OUTPUT "${PROJECT_BINARY_DIR}/servicedb.pc" INPUT "${PROJECT_BINARY_DIR}/servicedb.pc.in")
    install(FILES "${PROJECT_BINARY_DIR}/servicedb.pc" DESTINATION ${pkgConfigDir} COMPONENT dev)
endfunction()
