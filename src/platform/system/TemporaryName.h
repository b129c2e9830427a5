// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace nearcast {

/// The name of a file beside another one, for as long as the object lives. From any thread.
class TemporaryName {
public:
    /// Makes the file, open for writing and readable by nobody else yet. Its name is that of the other one with a dot
    /// in front and letters behind: ".devices.json.k3Jx0a.new".
    /// @param beside the path of the other file
    /// @throws std::system_error naming `beside`
    explicit TemporaryName(const std::string& beside);
    /// Removes the file where it was not moved away. Closes nothing: the descriptor belongs to who takes it.
    ~TemporaryName();
    TemporaryName(const TemporaryName&) = delete;
    TemporaryName& operator=(const TemporaryName&) = delete;

    /// To be closed by the caller.
    [[nodiscard]] int descriptor() const noexcept { return descriptor_; }
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

    /// From now on a signal that a user or the system sends to end the process (Ctrl-C, TERM, HUP and the like) removes
    /// the first few of such files too. For a program: a library leaves its application's signals alone.
    static void removeOnSignals();
    /// Removes what processes that were killed have left beside a file. Only where nobody else writes it.
    static void removeLeftovers(const std::string& beside) noexcept;

private:
    std::string path_;
    int descriptor_ = -1;
    std::optional<std::size_t> place_;  ///< among the names that signals remove
};

}  // namespace nearcast
