// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>
#include <string>

namespace nearcast::fuzz {

/// Ends the run when something does not hold, whatever the input: the fuzzer takes the exception for a find, the unit
/// tests that run the seeds for a failure.
inline void expect(bool holds, const char* what) {
    if (!holds) throw std::logic_error(std::string("does not hold: ") + what);
}

}  // namespace nearcast::fuzz
