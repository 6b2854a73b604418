# Debian packages, built with `cpack` in a build folder: the runtime libraries, the development files
# (headers, CMake package, pkg-config file) and the tools (the example and the registry with their
# definitions). The architecture follows the compiler, so a cross build gives arm64 packages.
set(SERVICEDB_DEBIAN_MAINTAINER "ServiceDB developers <servicedb@example.com>"
    CACHE STRING "Maintainer named in the Debian packages")

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
    set(debianArchitecture arm64)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64)$")
    set(debianArchitecture amd64)
else()
    set(debianArchitecture "${CMAKE_SYSTEM_PROCESSOR}")
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME servicedb)
set(CPACK_PACKAGE_VENDOR "ServiceDB developers")
set(CPACK_PACKAGE_CONTACT "${SERVICEDB_DEBIAN_MAINTAINER}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)

set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${SERVICEDB_DEBIAN_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${debianArchitecture}")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# A shlibs file and the ldconfig trigger for the package of shared libraries.
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# Dependencies are named here rather than computed, so that they hold for a cross build as well; the
# package check compares them with the libraries that the programs of the amd64 packages load.
set(pocoRuntime "libpocofoundation80 (>= 1.11.0), libpoconet80 (>= 1.11.0), libpocojson80 (>= 1.11.0)")
set(cRuntime "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 12)")
set(exactRuntime "libservicedb0 (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libservicedb0)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
# The trigger lets dpkg run ldconfig once for all packages of a run.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/triggers")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${cRuntime}, ${pocoRuntime}")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "in-memory service database for in-vehicle microservices
ServiceDB holds a process's service database in memory and serves it over
REST/JSON and WebSocket subscriptions, maps values to and from the vehicle
through data handlers and announces its services at a service registry.

This package holds the shared libraries.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libservicedb-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${exactRuntime}, libpoco-dev (>= 1.11.0)")
set(CPACK_COMPONENT_DEV_DESCRIPTION "in-memory service database for in-vehicle microservices - development files
ServiceDB holds a process's service database in memory and serves it over
REST/JSON and WebSocket subscriptions.

This package holds the headers, the CMake package (find_package(ServiceDB))
and the pkg-config file (servicedb).")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME servicedb-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${exactRuntime}, ${cRuntime}, ${pocoRuntime}")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "in-memory service database for in-vehicle microservices - tools
ServiceDB holds a process's service database in memory and serves it over
REST/JSON and WebSocket subscriptions.

This package holds servicedb-example, a process with a simulated cabin and
audio library to try the interface with, and servicedb-registry, the
service registry at which processes announce their services.")

# Each package carries its copyright file, changelog and the explanations of lintian's remaining tags.
servicedb_gzip("${PROJECT_SOURCE_DIR}/packaging/changelog" changelog)
foreach(component IN ITEMS runtime dev tools)
    string(TOUPPER ${component} upper)
    set(package "${CPACK_DEBIAN_${upper}_PACKAGE_NAME}")
    set(docDir "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}")
    install(FILES "${PROJECT_SOURCE_DIR}/packaging/copyright" DESTINATION ${docDir} COMPONENT ${component})
    install(FILES "${changelog}" DESTINATION ${docDir} COMPONENT ${component})
    if(EXISTS "${PROJECT_SOURCE_DIR}/packaging/lintian/${package}")
        install(FILES "${PROJECT_SOURCE_DIR}/packaging/lintian/${package}"
            DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/lintian/overrides COMPONENT ${component})
    endif()
endforeach()

include(CPack)
