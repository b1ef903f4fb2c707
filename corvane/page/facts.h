#pragma once

#include <nlohmann/json_fwd.hpp>
#include <optional>

#include "metadata.h"

/// What a run's metadata say, for people: {"machine": [text, ...] for the head of a page, "facts":
/// [[name, text], ...], "missing": [text, ...] of what could not be measured, "marks": [[second of
/// the run, text], ...]}; all empty without metadata.
nlohmann::ordered_json factsOf(const std::optional<runs::Metadata>& metadata);
