#include "kernel_tree.h"

#include <filesystem>
#include <fstream>
#include <stdlib.h>

#include "kernel_file.h"

namespace fs = std::filesystem;

KernelTree::KernelTree(std::initializer_list<std::pair<std::string, std::string>> files)
    : root_((fs::temp_directory_path() / "kernel-tree.XXXXXX").string()) {
  if (mkdtemp(root_.data()) == nullptr) throw fs::filesystem_error("mkdtemp", std::error_code());
  for (const auto& [path, content] : files)
    write(path, content);
  setKernelRoot(root_);
}

KernelTree::~KernelTree() {
  setKernelRoot("");
  fs::remove_all(root_);
}

void KernelTree::write(const std::string& path, std::string_view content) const {
  fs::create_directories(fs::path(root_ + path).parent_path());
  std::ofstream(root_ + path) << content;
}

void KernelTree::link(const std::string& path, const std::string& target) const {
  fs::create_directories(fs::path(root_ + path).parent_path());
  fs::create_symlink(target, root_ + path);
}

void KernelTree::remove(const std::string& path) const {
  fs::remove_all(root_ + path);
}
