// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "evaluate/Evaluation.h"

#include <string>

namespace nearcast::cli {

/// The evaluation as tables with aligned columns, for people: one for each recording, and one for all where there are
/// several. With a sweep only the table of its values.
std::string textOf(const Evaluation& evaluation);

/// The evaluation as one JSON object and a line end.
std::string JSONOf(const Evaluation& evaluation);

/// The evaluation as its page reads it (docs/reports.md), in JSON.
/// @param program name and version of the program that writes the page
std::string pageDataOf(const Evaluation& evaluation, const std::string& program);

}  // namespace nearcast::cli
