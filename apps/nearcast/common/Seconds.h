// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace nearcast::cli {

/// Why a text is no time that a command can run for; empty where it is one. For the options `--for`.
std::string isTime(const std::string& text);

}  // namespace nearcast::cli
