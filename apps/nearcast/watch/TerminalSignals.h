// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>

namespace nearcast::cli {

/// What happens to the terminal of a program that draws over what it has drawn: Ctrl-Z and `fg`, and another size. Make
/// it before any other thread, so that all of them leave these signals to it.
class TerminalSignals {
public:
    /// Takes the signal that has come. For Ctrl-Z it stops the process, and returns when that goes on.
    /// @return whether others may have written to the terminal meanwhile
    using Take = std::function<bool()>;

    /// @param come called on a thread of its own when a signal has come; it calls `take` once, with nothing drawn
    ///             meanwhile, and then draws anew
    explicit TerminalSignals(std::function<void(const Take& take)> come);
    ~TerminalSignals();
    TerminalSignals(const TerminalSignals&) = delete;
    TerminalSignals& operator=(const TerminalSignals&) = delete;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace nearcast::cli
