// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "evaluate/Evaluation.h"

#include <string>

namespace nearcast::cli {

/// The evaluation as tables with aligned columns, for people: one for each recording, and one for all where there are
/// several. With a sweep the table of its values alone.
std::string textOf(const Evaluation& evaluation);

/// The evaluation as one JSON object, with line ends.
std::string JSONOf(const Evaluation& evaluation);

/// The evaluation as its page reads it (docs/reports.md), in JSON.
/// @param program which program wrote it
std::string pageDataOf(const Evaluation& evaluation, const std::string& program);

}  // namespace nearcast::cli
