// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/EventWriter.h"
#include "lines/LineReader.h"

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
/// @param source lives longer than the call
/// @throws lines::InputError for a file or line that cannot be read; what happened before has been written
/// @throws std::logic_error when the manager exists already
void run(lines::LineSource& source, const RunOptions& options, EventWriter::Out out);
/// The same from files.
void run(const std::vector<std::string>& paths, const RunOptions& options, EventWriter::Out out);

}  // namespace nearcast::lab
