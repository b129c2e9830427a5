// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/UsageError.h"

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// Writes to standard output.
/// @throws std::system_error when it cannot be written
void writeOut(std::string_view text);
/// Makes sure that all of it has been written.
/// @throws std::system_error when it cannot be written
void finishOut();
/// Whether an option `--output` means standard output: it is absent, or "-".
inline bool isStandardOutput(std::string_view output) { return output.empty() || output == "-"; }
/// Says something on standard error, after all that was written before; gives `status` back.
int complain(std::string_view command, std::string_view problem, ExitStatus status);

/// A file that appears under its name whole or not at all: it is written beside its place and moved there by `commit`.
/// Without a commit what was there before stays. What is no regular file (a terminal, a pipe) is written in place.
class AtomicFile {
public:
    /// @throws std::system_error naming the file
    explicit AtomicFile(std::string path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// @throws std::system_error naming the file
    void write(std::string_view text);
    /// Makes sure that the content has reached the disk, then gives it its name.
    /// @throws std::system_error naming the file
    void commit();

private:
    std::string path_;
    std::string temporary_;  ///< empty: written in place
    std::FILE* file_ = nullptr;
};

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
