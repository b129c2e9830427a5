// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace nearcast::cli {

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
    [[noreturn]] void fail(const char* what) const;

    std::string path_;
    std::string temporary_;  ///< empty: written in place
    std::FILE* file_ = nullptr;
};

}  // namespace nearcast::cli
