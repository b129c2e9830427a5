// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "report/ReportData.h"

#include <functional>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// One page that needs nothing beside itself: it opens without a network, and its policy lets it ask for nothing and
/// run no script but its own.
std::string reportPage(const ReportData& data, const std::string& program);

/// Text that may stand in a page or in an attribute of it. Text that is not UTF-8 gets the replacement character.
std::string markupOf(std::string_view text);

/// The text with each {{name}} replaced by what `value` gives for the name. What is put in is not looked at again.
/// @throws std::logic_error for a {{ without an end
std::string filledIn(std::string_view text, const std::function<std::string_view(std::string_view name)>& value);

}  // namespace nearcast::cli
