#pragma once

#include <string>
#include <vector>

#include "folder.h"

/// The paths of everything in the folder, "." and ".." included, in the order of the listing.
/// Tells each name on standard output. Empty where the folder cannot be listed.
std::vector<FilePath> listRunFolder(const Folder& folder);

/// Whether a file is converted at all: ".txt" may stand anywhere in its path.
bool isResultFile(const std::string& path);
