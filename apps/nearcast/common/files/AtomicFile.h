// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "common/files/TemporaryName.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// A file that appears under its name whole or not at all: it is written beside its place and moved there by `commit`.
/// Without a commit what was there before stays.
///
/// The name may be a symbolic link: what it leads to is written, and the link stays. A file that was there before keeps
/// its mode and its owner. Where the user may not give the new file that owner, its content is copied into the old one
/// when all of it is there. What is no regular file (a terminal, a pipe) is written in place.
class AtomicFile {
public:
    /// @throws std::system_error naming the file
    explicit AtomicFile(std::string path);

    /// @throws std::system_error naming the file
    void write(std::string_view text);
    /// Makes sure that the content has reached the disk, then gives it its name.
    /// @throws std::system_error naming the file
    void commit();

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Closer>;

    void openBeside();
    void openInPlace();
    [[nodiscard]] bool takeOver(int descriptor) const;
    void finish(File file, bool toTheDisk) const;
    void copyInto() const;
    [[noreturn]] void fail(const char* what) const;

    const std::string path_;                  ///< as it was given, for messages
    const std::string target_;                ///< where its links lead
    std::optional<TemporaryName> temporary_;  ///< none: written in place
    bool copied_ = false;                     ///< the file that is there is kept, and gets the content
    File file_;
};

}  // namespace nearcast::cli
