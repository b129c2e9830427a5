// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"
#include "support/Dongle.h"

namespace nearcast {

namespace {

/// What joining six pieces of an absent name gives, for each is formatted as an absent text is.
constexpr std::string_view addressOfNoName = "(null):(null):(null):(null):(null):(null)";

}  // namespace

bool Manager::acceptsAddress(Text /*MACAddr*/) const { return true; }

bool Manager::isValidateMACAddr(Text MACAddr) {
    const Trace trace = this->trace("-[QXNearcastManager isValidateMACAddr:]", Trace::Audience::internal);
    trace.start("", MACAddr);
    const bool valid = acceptsAddress(MACAddr);
    trace.end("", MACAddr, ", -> ", valid);
    return valid;
}

std::optional<std::string> Manager::getPortNameFromMACAddr(Text MACAddr) {
    const AddressKey address(MACAddr.value_or(""));
    const FoundPort found = findPort(MACAddr ? &address : nullptr);
    if (!found.port) return std::nullopt;
    return std::string(found.port->name.view());
}

// Without a heap, for there is one look-up for each advertisement.
FoundPort Manager::findPort(const AddressKey* MACAddr) {
    const Trace trace = this->trace("-[QXNearcastManager getPortNameFromMACAddr:]", Trace::Audience::internal);
    const auto text = [&] { return MACAddr != nullptr ? Text(MACAddr->text()) : Text(); };
    trace.start("", text);
    const auto look = [&] {
        const NSLockGuard guard(_lockMutableSettingsFlag);
        return MACAddr != nullptr ? mutableSettings.find(*MACAddr) : FoundPort();
    };
    FoundPort found = look();
    trace.end("", text, ", -> ", [&] { return found.port ? Text(found.port->name.view()) : Text(); });
    return found;
}

std::string Manager::getMACAddressFromName(Text NameString) {
    const Trace trace = this->trace("-[QXNearcastManager getMACAddressFromName:]", Trace::Audience::internal);
    trace.start("", NameString);
    const auto address = NameString ? dongle::addressInName(*NameString) : std::string(addressOfNoName);
    if (!address) {
        trace.error("the name is shorter than 14 characters: ", *NameString);
        trace.end("", NameString, ", -> ", *NameString);
        return std::string(*NameString);
    }
    trace.end("", NameString, ", -> ", *address);
    return *address;
}

}  // namespace nearcast
