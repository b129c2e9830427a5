// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/UsageError.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>

namespace nearcast::cli {

/// Standard output cannot be written.
class OutputError : public std::system_error {
public:
    using std::system_error::system_error;
};

/// Writes to standard output.
/// @throws OutputError when it cannot be written
void writeOut(std::string_view text);
/// Makes sure that all of it has been written.
/// @throws OutputError when it cannot be written
void finishOut();
/// Whether an option `--output` means standard output: it is absent, or "-".
inline bool isStandardOutput(std::string_view output) { return output.empty() || output == "-"; }
/// Whether an option `--output` means standard output, and that is a terminal.
bool isTerminal(const std::string& output);
/// What is wrong with a text as an option `--output`: the empty one, which is a mistake in a script. The check of these
/// options.
std::string problemWithOutput(const std::string& text);
/// Says something on standard error, printable and on one line, after all that was written before; gives `status` back.
/// @param command where it is known
int complain(std::string_view command, std::string_view problem, ExitStatus status) noexcept;

/// Says on standard error what was written, once it is there.
/// @param output as an option `--output` says it
/// @param what   "1234 advertisements, 10.0 s"
void sayWritten(std::string_view command, const std::string& output, const std::string& what);

/// @name A line of standard error, a terminal, that is drawn over itself
/// It is cut to the terminal's width. What `complain` says takes its place. From any thread.
/// @{
void drawLine(std::string_view text);
void wipeLine();
/// @}

/// A file that grows piece by piece, each piece written at once: whatever ends the program, all pieces before are
/// there.
class GrowingFile {
public:
    /// Makes the file, or empties it.
    /// @throws std::system_error naming the file
    explicit GrowingFile(std::string path);

    /// @throws std::system_error naming the file
    void write(std::string_view bytes);

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };

    std::string path_;
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace nearcast::cli
