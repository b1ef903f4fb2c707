# What every build for Android needs and CMake or an old kit does not do by itself.
include(CheckCXXSourceCompiles)
check_cxx_source_compiles("#include <version>
#if _LIBCPP_VERSION < 160000
#error
#endif
int main() {}" CORVANE_KIT_IS_NEW_ENOUGH)
if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 16 OR NOT CORVANE_KIT_IS_NEW_ENOUGH)
  message(FATAL_ERROR "This Android kit is too old: its compiler (${CMAKE_CXX_COMPILER_VERSION} here) and C++ library must be of version 16 or later.")
endif()

# Some devices have pages of 16 KiB.
add_link_options(LINKER:-z,max-page-size=16384 LINKER:--no-undefined)
# CMake holds that Android knows no search path in a program. It has since API level 24.
foreach(kind EXECUTABLE SHARED_LIBRARY)
  set(CMAKE_${kind}_RUNTIME_CXX_FLAG -Wl,-rpath,)
  set(CMAKE_${kind}_RUNTIME_CXX_FLAG_SEP :)
endforeach()
# Where a kit keeps its libraries, below usr/lib.
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-android)
