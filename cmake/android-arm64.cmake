# Android 10 and later on AArch64, by the toolchain file of the kit that ANDROID_NDK_HOME names.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES CORVANE_STATIC)
set(ANDROID_ABI arm64-v8a)
set(ANDROID_PLATFORM android-29)
if(CORVANE_STATIC)
  set(ANDROID_STL c++_static)
else()
  set(ANDROID_STL c++_shared)
endif()
include($ENV{ANDROID_NDK_HOME}/build/cmake/android.toolchain.cmake)
# A static program needs no more of Android than its kernel: the tests run where this is built.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
