// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"

#include <chrono>

namespace nearcast {

namespace {

constexpr std::chrono::seconds presenceTimeout{5};

/// A key of the table as the address that it stands for.
class SilentAddress {
public:
    explicit SilentAddress(PackedAddress address) noexcept : text_(address), key_(address, text_.view()) {}
    explicit SilentAddress(std::string_view name) noexcept : key_(name) {}
    SilentAddress(const SilentAddress&) = delete;
    SilentAddress& operator=(const SilentAddress&) = delete;

    [[nodiscard]] const AddressKey& key() const noexcept { return key_; }

private:
    AddressText text_;
    AddressKey key_;
};

}  // namespace

void Manager::eventRepeatTimer() {
    const Trace trace = this->trace("-[QXNearcastManager eventRepeatTimer]", Trace::Audience::internal);
    trace.start("");
    {
        const NSLockGuard guard(_lockRssiDataFlag);
        // Nobody asks for silence: the table keeps what it holds, and the sweep ends without an exit record.
        if (!sweep(rssiData.addresses()) || !sweep(rssiData.names())) return;
    }
    trace.end("");
}

template <class Half>
bool Manager::sweep(Half& half) {
    for (auto entry = half.begin(); entry != half.end();) {
        const NSDate now = platform_.date();
        const NSDate expiry = NSDate::dateWithTimeInterval(presenceTimeout, entry->second.lastUpdate);
        if (!expiry.earlierDate(now).isEqualToDate(expiry)) {
            ++entry;
            continue;
        }
        if (!tellSilence(SilentAddress(entry->first).key())) return false;
        entry = half.erase(entry);
    }
    return true;
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
