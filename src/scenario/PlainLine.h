// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scenario/Line.h"

#include <optional>
#include <string_view>

namespace nearcast::scenario {

/// Reads an `advertise` line that looks as `writeLine` writes it, with its own time and without anything that
/// needs care: five times as fast as reading JSON, which counts for recordings of a day.
/// @return what `parseJSONLine` gives for it; nothing for any other line, good or bad
std::optional<Line> readPlainLine(std::string_view text);

}  // namespace nearcast::scenario
