#pragma once

#include <span>
#include <vector>

/// Which of many tests found something, by Benjamini and Hochberg's procedure: of those that are
/// named, at most the share `rate` is expected to be chance. In the order of `probabilities`.
std::vector<bool> discoveries(std::span<const double> probabilities, double rate);
