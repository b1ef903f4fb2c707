# What nearly every file includes, read once for all of them: it is half of what a build takes. With
# CORVANE_PRECOMPILE off, as the gcc preset has it, each file must name what it needs.
option(CORVANE_PRECOMPILE "Read the standard library's headers once" ON)
set(precompiled_headers
  <algorithm> <array> <chrono> <cstdint> <cstdio> <cstring> <filesystem> <functional> <map> <memory>
  <optional> <sstream> <string> <string_view> <vector>)
if(CORVANE_PRECOMPILE)
  file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/precompiled.cpp CONTENT "")
  add_library(precompiled OBJECT ${PROJECT_BINARY_DIR}/precompiled.cpp)
  target_link_libraries(precompiled PRIVATE corvane_flags)
  target_precompile_headers(precompiled PRIVATE ${precompiled_headers})
endif()

# precompile(TARGET...)
function(precompile)
  if(NOT CORVANE_PRECOMPILE)
    return()
  endif()
  foreach(target ${ARGN})
    target_precompile_headers(${target} REUSE_FROM precompiled)
    # As the headers were compiled, which are a library's, too.
    target_compile_options(${target} PRIVATE -fPIC)
  endforeach()
endfunction()
