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
            if (!isStale(rssiData[place])) {
                ++place;
                continue;
            }
            // The delegate does not ask for silence: the table keeps what it holds, and the sweep ends without an exit
            // record.
            AddressText space;
            if (!tellSilence(rssiData.addressAt(place, space))) return;
            rssiData.eraseAt(place);
        }
        nobodyInRange_.store(rssiData.empty(), std::memory_order_release);
    }
    trace.end("");
}

/// Without a dongle to fall silent, or anybody to hear of it, a sweep does nothing that shows but its trace and its
/// lock.
bool Manager::sweepIsIdle() const {
    if (LogWriter::isLogging() || NSLock::isObserved()) return false;
    if (nobodyInRange_.load(std::memory_order_acquire)) return true;
    const AtomicShared<QXNearcastManagerDelegate>::Borrowed listener(_delegate);
    return listener.get() == nullptr || !listener.get()->didUpdateState;
}

bool Manager::isStale(const Signal& signal) const {
    const NSDate now = platform_.date();
    const NSDate expiry = NSDate::dateWithTimeInterval(presenceTimeout, signal.lastUpdate);
    return expiry.earlierDate(now).isEqualToDate(expiry);
}

bool Manager::tellSilence(const AddressKey& address) {
    AtomicShared<QXNearcastManagerDelegate>::Borrowed listener(_delegate);
    if (listener.get() == nullptr || !listener.get()->didUpdateState) return false;
    // Twice, and traces show both: first for whether there is a port, then for its name. The registry may change in
    // between; the second answer counts.
    FoundPort found = findPort(&address);
    if (found.port) found = findPort(&address);
    listener.reload();
    if (listener.get() != nullptr && listener.get()->didUpdateState) {
        listener.get()->didUpdateState(found.nameOrNone(), address.text());
    }
    return true;
}

}  // namespace nearcast
