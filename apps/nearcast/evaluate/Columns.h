// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "evaluate/Evaluation.h"

#include <string>
#include <vector>

namespace nearcast::cli {

// What tables of an evaluation have in common, in text and in HTML.

/// The names of columns, followed by those of the figures.
std::vector<std::string> withFigures(std::vector<std::string> names);
/// The cells of a row, followed by its figures.
std::vector<std::string> withFigures(std::vector<std::string> cells, const lab::Score& score);
/// The columns of the settings that are swept.
std::vector<std::string> sweepNames(const Evaluation& evaluation);

}  // namespace nearcast::cli
