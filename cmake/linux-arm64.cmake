# Cross build for AArch64 Linux with clang-19 against the folder that scripts/sysroot-arm64 makes;
# qemu-user runs the tests.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)

set(CORVANE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-arm64 CACHE PATH
    "AArch64 libraries and headers")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CORVANE_SYSROOT)
cmake_path(ABSOLUTE_PATH CORVANE_SYSROOT NORMALIZE OUTPUT_VARIABLE CMAKE_SYSROOT)

set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
set(CMAKE_C_COMPILER_TARGET aarch64-linux-gnu)
set(CMAKE_CXX_COMPILER_TARGET aarch64-linux-gnu)
# There is no libstdc++ in that folder, so already CMake's trial of the compiler needs to know.
set(CMAKE_CXX_FLAGS_INIT -stdlib=libc++)
set(CMAKE_EXE_LINKER_FLAGS_INIT -fuse-ld=lld)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -fuse-ld=lld)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64;-L;${CMAKE_SYSROOT})
