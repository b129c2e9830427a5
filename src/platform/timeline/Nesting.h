// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace nearcast {

/// How deep events of a timeline lie inside one another. What happens while a call sleeps runs on the stack of that
/// call, and may sleep itself: without a bound a long recording takes all of the stack. For the driving thread.
class Nesting {
public:
    static constexpr int deepest = 500;

    /// One event more, for a scope.
    class Inside {
    public:
        explicit Inside(Nesting& nesting) noexcept : nesting_(nesting) { ++nesting_.depth_; }
        ~Inside() { --nesting_.depth_; }
        Inside(const Inside&) = delete;
        Inside& operator=(const Inside&) = delete;

    private:
        Nesting& nesting_;
    };

    /// Whether no event may happen before one of those in progress has ended.
    [[nodiscard]] bool full() const noexcept { return depth_ == deepest; }
    /// What is wrong then, for people.
    static constexpr std::string_view complaint = "500 calls sleep inside one another already";
    static_assert(deepest == 500);

private:
    int depth_ = 0;
};

}  // namespace nearcast
