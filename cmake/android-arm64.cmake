# Android 10 and later on AArch64, by the toolchain file of the kit that ANDROID_NDK_HOME names.
set(ANDROID_ABI arm64-v8a)
set(ANDROID_PLATFORM android-29)
set(ANDROID_STL c++_shared)
include($ENV{ANDROID_NDK_HOME}/build/cmake/android.toolchain.cmake)
