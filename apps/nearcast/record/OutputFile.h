// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// A file that is written piece by piece, and in which every piece is at once: what has been written outlives the
/// program, however it ends.
class OutputFile {
public:
    /// Makes the file, or empties it.
    /// @throws std::system_error naming the file
    explicit OutputFile(std::string path);

    /// @throws std::system_error naming the file
    void write(std::string_view bytes);

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    [[noreturn]] void fail(const char* what) const;

    std::string path_;
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace nearcast::cli
