// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <memory>

namespace nearcast::cli {

/// Turns Ctrl-C (SIGINT) and SIGTERM into a call, and into the end of the pipes that are read. Make it before any other
/// thread, so that all of them leave the signals to it. The second signal ends the process at once.
class Interruption {
public:
    /// @param interrupted called once, on a thread of its own
    explicit Interruption(std::function<void()> interrupted);
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    /// Whether a signal has come.
    [[nodiscard]] bool happened() const noexcept;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace nearcast::cli
