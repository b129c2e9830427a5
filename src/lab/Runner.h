// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/EventWriter.h"

#include <string>
#include <vector>

namespace nearcast::lab {

struct RunOptions {
    bool trace = false;  ///< write the trace records too
    bool locks = false;  ///< write the taking and releasing of the four locks too
};

/// Runs a scenario on a virtual clock, on the calling thread, as fast as it goes, and writes what the manager reported.
///
/// Once in a process: there is one manager in it.
/// @throws lines::InputError for a file or line that cannot be read; what happened before has been written
/// @throws std::logic_error when the manager exists already
void run(const std::vector<std::string>& paths, const RunOptions& options, EventWriter::Out out);

}  // namespace nearcast::lab
