// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace nearcast::cli {

/// The style of the page of an evaluation, and its script, which shows what a point is when it is pointed at, touched
/// or reached by the keyboard.
extern const std::string_view pageStyle;
extern const std::string_view pageScript;

}  // namespace nearcast::cli
