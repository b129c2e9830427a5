// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/Runner.h"

#include <string>
#include <vector>

namespace nearcast::scenario {

struct Outcome {
    std::string output;
    std::string problem;  ///< what the run ended with, where it did not end well
    bool clean = false;   ///< the process ended by itself and without a problem
};

/// Runs a scenario in a process of its own, for there is one manager in a process. Only while the caller has one
/// thread.
Outcome runInChild(const std::vector<std::string>& lines, const lab::RunOptions& options);

}  // namespace nearcast::scenario
