// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/system/TemporaryName.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

/// A file that appears under its name whole or not at all: it is written beside its place and moved there by `commit`.
/// Without a commit what was there before stays.
///
/// The name may be a symbolic link: what it leads to is written, and the link stays. A file that was there before keeps
/// its mode and its owner. What is no regular file (a terminal, a pipe) is written in place.
class AtomicFile {
public:
    /// What becomes of a file that belongs to somebody else, where the user may not give the new one that owner.
    enum class Foreign {
        copied,   ///< the content is copied into it when all of it is there, so not in one step
        refused,  ///< it is left alone
    };

    /// @throws std::system_error naming the file
    explicit AtomicFile(std::string path, Foreign foreign = Foreign::copied);

    /// Gives it the mode of another file, and where the user may, its owner; before `commit`.
    void alike(const std::string& other) noexcept;
    /// @throws std::system_error naming the file
    void write(std::string_view text);
    /// Makes sure that the content has reached the disk, then gives it its name, and that on the disk too.
    /// @throws std::system_error naming the file
    void commit();

    /// Where the links of a path lead, also where nothing is there.
    static std::string followed(const std::string& path);

private:
    struct Closer {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Closer>;

    void openBeside(Foreign foreign);
    void openInPlace();
    [[nodiscard]] bool takeOver(int descriptor) const;
    void finish(File file, bool toTheDisk) const;
    void copyInto() const;
    void keepName() const;
    [[noreturn]] void fail(const char* what) const;

    const std::string path_;                  ///< as it was given, for messages
    const std::string target_;                ///< where its links lead
    std::optional<TemporaryName> temporary_;  ///< none: written in place
    bool copied_ = false;                     ///< the file that is there is kept, and gets the content
    File file_;
};

}  // namespace nearcast
