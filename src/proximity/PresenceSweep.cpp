// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"

#include <chrono>

namespace nearcast {

namespace {
constexpr std::chrono::seconds presenceTimeout{5};
}

void Manager::eventRepeatTimer() {
    const Trace trace = this->trace("-[QXNearcastManager eventRepeatTimer]", Trace::Audience::internal);
    trace.start("");
    {
        const NSLockGuard guard(_lockRssiDataFlag);
        for (auto entry = rssiData.begin(); entry != rssiData.end();) {
            const NSDate now = platform_.date();
            const NSDate expiry = NSDate::dateWithTimeInterval(presenceTimeout, entry->second.lastUpdate);
            if (!expiry.earlierDate(now).isEqualToDate(expiry)) {
                ++entry;
                continue;
            }
            // Nobody asks for silence: the table keeps what it holds, and the sweep ends without an exit record.
            if (!tellSilence(entry->first)) return;
            entry = rssiData.erase(entry);
        }
    }
    trace.end("");
}

bool Manager::tellSilence(std::string_view address) {
    if (const auto listener = delegate(); listener == nullptr || !listener->didUpdateState) return false;
    auto portName = getPortNameFromMACAddr(address);
    if (portName) portName = getPortNameFromMACAddr(address);
    if (const auto current = delegate(); current != nullptr && current->didUpdateState) {
        current->didUpdateState(portName.value_or(""), address);
    }
    return true;
}

}  // namespace nearcast
