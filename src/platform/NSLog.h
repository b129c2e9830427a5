// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace nearcast {

/// Where lines for people go. From any thread; it never throws.
class Console {
public:
    virtual ~Console() = default;
    virtual void NSLog(std::string_view line) noexcept = 0;
};

}  // namespace nearcast
