# Says what a cross build lacks. Ahead of project(), whose own messages would hide it.
get_filename_component(toolchain "${CMAKE_TOOLCHAIN_FILE}" NAME_WE)
if(toolchain STREQUAL android-arm64
   AND NOT EXISTS $ENV{ANDROID_NDK_HOME}/build/cmake/android.toolchain.cmake)
  message(FATAL_ERROR "No kit for Android here: set ANDROID_NDK_HOME to the folder of one.")
endif()
if(toolchain STREQUAL linux-arm64)
  set(CORVANE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../build/sysroot-arm64 CACHE PATH
      "AArch64 libraries and headers")
  if(NOT EXISTS ${CORVANE_SYSROOT}/packages)
    message(FATAL_ERROR "No AArch64 libraries here: run scripts/sysroot-arm64.")
  endif()
endif()
