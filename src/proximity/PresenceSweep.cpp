// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"

#include <chrono>

namespace nearcast {

namespace {

constexpr std::chrono::seconds presenceTimeout{5};

}  // namespace

void Manager::eventRepeatTimer() {
    const Trace trace = this->trace("-[QXNearcastManager eventRepeatTimer]", Trace::Audience::internal);
    trace.start("");
    {
        const NSLockGuard guard(_lockRssiDataFlag);
        for (std::size_t place = 0; place < rssiData.size();) {
            const Signal& signal = rssiData[place];
            if (!isStale(signal)) {
                ++place;
                continue;
            }
            // Nobody asks for silence: the table keeps what it holds, and the sweep ends without an exit record.
            AddressText space;
            if (!tellSilence(signal.address(space))) return;
            rssiData.erase(place);
        }
    }
    trace.end("");
}

bool Manager::isStale(const Signal& signal) const {
    const NSDate now = platform_.date();
    const NSDate expiry = NSDate::dateWithTimeInterval(presenceTimeout, signal.lastUpdate);
    return expiry.earlierDate(now).isEqualToDate(expiry);
}

bool Manager::tellSilence(const AddressKey& address) {
    auto listener = _delegate.load();
    if (listener == nullptr || !listener->didUpdateState) return false;
    FoundPort found = findPort(address);
    if (found.port != nullptr) found = findPort(address);
    _delegate.reload(listener);
    if (listener != nullptr && listener->didUpdateState) {
        listener->didUpdateState(found.port ? std::string_view(found.port->name) : "", address.text());
    }
    return true;
}

}  // namespace nearcast
