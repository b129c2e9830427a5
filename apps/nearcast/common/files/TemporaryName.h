// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace nearcast::cli {

/// The name of a file beside another one, for as long as the object lives. It is also removed when a signal ends the
/// process that a user or the system sends: Ctrl-C, TERM, HUP and the like. A few at a time.
class TemporaryName {
public:
    /// Makes the file, open for writing and readable by nobody else yet.
    /// @param beside the path that the new one begins with
    /// @throws std::system_error naming `beside`
    explicit TemporaryName(const std::string& beside);
    /// Closes nothing: the descriptor belongs to who takes it.
    ~TemporaryName();
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    /// To be closed by the caller.
    [[nodiscard]] int descriptor() const noexcept { return descriptor_; }
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

private:
    std::string path_;
    int descriptor_ = -1;
    std::size_t place_ = 0;  ///< among the names that signals remove
};

}  // namespace nearcast::cli
