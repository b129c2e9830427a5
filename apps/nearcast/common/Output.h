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
/// Says something on standard error, printable and on one line, after all that was written before; gives `status` back.
/// @param command where it is known
int complain(std::string_view command, std::string_view problem, ExitStatus status) noexcept;

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
