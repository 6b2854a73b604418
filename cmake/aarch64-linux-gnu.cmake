# Cross-builds for 64-bit ARM Linux with Debian's cross compiler (g++-aarch64-linux-gnu). The C and
# C++ runtime come with the compiler; every other library is taken from SERVICEDB_AARCH64_ROOT, a
# folder into which Debian's arm64 packages are unpacked (scripts/check-aarch64.sh makes it). Tests
# and test discovery run under qemu-aarch64-static.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

set(SERVICEDB_AARCH64_ROOT "" CACHE PATH "Folder holding Debian's arm64 packages unpacked")
if(NOT SERVICEDB_AARCH64_ROOT)
    message(FATAL_ERROR "Set SERVICEDB_AARCH64_ROOT to the folder of unpacked arm64 packages")
endif()
# try_compile projects read this file again and need the folder as well.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SERVICEDB_AARCH64_ROOT)

set(CMAKE_FIND_ROOT_PATH "${SERVICEDB_AARCH64_ROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The unpacked libraries need each other (POCO's Foundation needs PCRE and zlib) when linking.
set(_servicedbAarch64LibDirs
    "${SERVICEDB_AARCH64_ROOT}/usr/lib/aarch64-linux-gnu"
    "${SERVICEDB_AARCH64_ROOT}/lib/aarch64-linux-gnu")
foreach(dir IN LISTS _servicedbAarch64LibDirs)
    string(APPEND CMAKE_EXE_LINKER_FLAGS_INIT " -Wl,-rpath-link,${dir}")
    string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,-rpath-link,${dir}")
endforeach()

list(JOIN _servicedbAarch64LibDirs ":" _servicedbAarch64LibraryPath)
set(CMAKE_CROSSCOMPILING_EMULATOR
    qemu-aarch64-static -L /usr/aarch64-linux-gnu -E "LD_LIBRARY_PATH=${_servicedbAarch64LibraryPath}")
