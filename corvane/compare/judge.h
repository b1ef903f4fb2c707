#pragma once

#include <span>
#include <string_view>

#include "verdicts.h"

/// Gives every figure that has a difference its verdict. The figures of one source, which lie
/// together, are one family of tests.
void judge(std::span<Compared> figures, const Judgement& judgement);

/// Whether METRIC, SOURCE.METRIC or SOURCE.ENTITY.METRIC means the figure.
bool isCalled(const FigureKey& key, std::string_view said);
