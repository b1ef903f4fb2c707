# Libraries that are headers alone, found where the building machine has them and linked to from one
# folder, so that a cross build sees them and nothing else of that machine.
function(corvane_header_library target header package)
  find_path(${target}_headers ${header} REQUIRED NO_CMAKE_FIND_ROOT_PATH
            DOC "Folder of ${header} (Debian: ${package})")
  get_filename_component(folder ${header} DIRECTORY)
  file(MAKE_DIRECTORY ${PROJECT_BINARY_DIR}/headers)
  file(CREATE_LINK ${${target}_headers}/${folder} ${PROJECT_BINARY_DIR}/headers/${folder} SYMBOLIC)
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE ${PROJECT_BINARY_DIR}/headers)
endfunction()

corvane_header_library(cli11 CLI/CLI.hpp libcli11-dev)
corvane_header_library(json nlohmann/json.hpp nlohmann-json3-dev)
