#pragma once

#include <functional>
#include <string>

#include "metadata.h"

/// Changes a run's metadata, or makes it where there is none: `change` gets what is in the file
/// (nothing where there is no file), and what it makes of that takes its place as a whole. One at a
/// time, for all processes. Says on standard error where it cannot be written; false then.
bool changeMetadata(int base, const std::string& suffix,
                    const std::function<void(std::optional<runs::Metadata>&)>& change);

/// Adds a mark to the recording that goes on in the folder `output`: to the run `name`, else to
/// the one that began last. Returns the exit status.
int markRecording(const std::string& output, const std::optional<std::string>& name,
                  const std::string& text);
