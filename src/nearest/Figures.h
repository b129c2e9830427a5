// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace nearcast::nearest {

/// A figure for people: at most one decimal place, none where it is 0; always with a point, whatever the locale.
std::string oneDecimal(double value);
/// The shortest text that reads back as the same number.
std::string figure(double value);

}  // namespace nearcast::nearest
