// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>

namespace nearcast {

/// How an application with a loop of its own drives a platform: see `Platform`, whose operations these are.
class Drive {
public:
    virtual ~Drive() = default;
    virtual int descriptor() = 0;
    virtual void dispatch() = 0;
    virtual bool runFor(std::chrono::microseconds duration) = 0;
    virtual void interrupt() = 0;
    [[nodiscard]] virtual std::string failure() const = 0;
};

}  // namespace nearcast
