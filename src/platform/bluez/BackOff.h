// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/Moment.h"

#include <algorithm>

namespace nearcast::bluez {

/// Pauses that double from one failure to the next, up to a longest one.
class BackOff {
public:
    constexpr BackOff(Time first, Time longest) : first_(first), longest_(longest), next_(first) {}

    /// The pause to make now; the next one is twice as long.
    Time next() {
        const Time pause = next_;
        next_ = std::min(next_ * 2, longest_);
        return pause;
    }
    void reset() { next_ = first_; }

private:
    Time first_;
    Time longest_;
    Time next_;
};

}  // namespace nearcast::bluez
