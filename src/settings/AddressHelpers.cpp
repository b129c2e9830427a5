// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"
#include "support/Utf8.h"

namespace nearcast {

namespace {

constexpr std::size_t markerCharacters = 2;  // "QX"
constexpr std::size_t pieces = 6;
constexpr std::size_t pieceCharacters = 2;
constexpr std::size_t neededCharacters = markerCharacters + pieces * pieceCharacters;

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

// The name is copied under the lock, as it is described, and without a heap: there is one for each advertisement.
Manager::FoundPort Manager::findPort(const AddressKey* MACAddr) {
    const Trace trace = this->trace("-[QXNearcastManager getPortNameFromMACAddr:]", Trace::Audience::internal);
    const auto text = [&] { return MACAddr != nullptr ? Text(MACAddr->text()) : Text(); };
    trace.start("", text);
    FoundPort found;
    {
        const NSLockGuard guard(_lockMutableSettingsFlag);
        if (MACAddr != nullptr) {
            if (const RegisteredPort* const port = mutableSettings.portOf(*MACAddr)) found.port = *port;
        }
        found.changes = mutableSettings.changes();
    }
    trace.end("", text, ", -> ", [&] { return found.port ? Text(found.port->name.view()) : Text(); });
    return found;
}

std::string Manager::getMACAddressFromName(Text NameString) {
    const Trace trace = this->trace("-[QXNearcastManager getMACAddressFromName:]", Trace::Audience::internal);
    trace.start("", NameString);
    if (NameString && !hasCharacters(*NameString, neededCharacters)) {
        trace.error("the name is shorter than 14 characters: ", *NameString);
        trace.end("", NameString, ", -> ", *NameString);
        return std::string(*NameString);
    }
    std::string address;
    for (std::size_t piece = 0; piece < pieces; ++piece) {
        if (piece != 0) address.push_back(':');
        const std::size_t first = markerCharacters + piece * pieceCharacters;
        // A piece of an absent name is formatted as an absent text is.
        address.append(NameString ? characters(*NameString, first, pieceCharacters) : "(null)");
    }
    trace.end("", NameString, ", -> ", address);
    return address;
}

}  // namespace nearcast
