// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string>

namespace nearcast {

/// So many seconds of an application, as `Drive::runFor` takes them: 10^9 s at most, none for what is no number. A
/// time that is not over takes a microsecond at least, or a loop that runs for what is left of it would never end.
inline std::chrono::microseconds runTime(double seconds) {
    constexpr double longest = 1e9;
    constexpr double scale = 1e6;
    if (!(seconds > 0)) return std::chrono::microseconds(0);
    const std::chrono::microseconds rounded(std::llround(std::min(seconds, longest) * scale));
    return std::max(rounded, std::chrono::microseconds(1));
}

/// How an application with a loop of its own drives a platform: see `Platform`, whose operations these are.
class Drive {
public:
    virtual ~Drive() = default;
    virtual int descriptor() = 0;
    virtual void dispatch() = 0;
    virtual bool runFor(std::chrono::microseconds duration) = 0;
    /// For how long nothing will happen, where that is long and a `runFor` passes it at once; else 0. Who looks at the
    /// time at intervals only to show it need not do so meanwhile. From any thread.
    virtual std::chrono::microseconds quiet() { return std::chrono::microseconds(0); }
    virtual void interrupt() = 0;
    [[nodiscard]] virtual std::string failure() const = 0;
};

}  // namespace nearcast
