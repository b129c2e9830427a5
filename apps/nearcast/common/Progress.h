// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace nearcast::cli {

/// How much of the air was written down or played.
struct Tally {
    std::uint64_t advertisements = 0;
    std::chrono::microseconds length{0};

    /// "1234 advertisements, 10.0 s".
    [[nodiscard]] std::string text() const;
};

/// How far a command is: a line on standard error that is drawn over itself, a few times a second. On a terminal alone;
/// elsewhere it is nothing. Its end wipes the line away. One at a time, for one thread.
class Progress {
public:
    using Time = std::chrono::nanoseconds;

    /// @param wanted not where the command's own lines go to a terminal meanwhile: they are progress enough
    explicit Progress(bool wanted = true);
    /// @param clock one that never goes back; null: nothing is shown
    explicit Progress(std::function<Time()> clock) : clock_(std::move(clock)) {}
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    [[nodiscard]] bool shown() const { return clock_ != nullptr; }
    /// Draws the line again where the last time is long enough ago.
    /// @param text makes it; called only then
    void show(const std::function<std::string()>& text);
    void clear();

private:
    std::function<Time()> clock_;
    std::optional<Time> last_;
};

}  // namespace nearcast::cli
