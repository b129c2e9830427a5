// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machine/Machine.h"

#include <string>
#include <vector>

namespace nearcast::cli {

/// A radio, and whether it can be opened on this machine.
struct RadioEntry {
    std::string radio;  ///< as a radio string
    bool opens = false;
    std::string about;   ///< what it is, or why it cannot be opened
    std::string advice;  ///< what to do about that
};

/// All radios, the automatic one first.
std::vector<RadioEntry> radiosOf(const Machine& machine);

}  // namespace nearcast::cli
