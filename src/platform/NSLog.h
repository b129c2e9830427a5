// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

namespace nearcast {

/// Where lines for people go. From any thread, also under the manager's locks: one that calls the application waits
/// until its thread has released them. It never throws.
class Console {
public:
    virtual ~Console() = default;
    virtual void NSLog(std::string_view line) noexcept = 0;
};

}  // namespace nearcast
