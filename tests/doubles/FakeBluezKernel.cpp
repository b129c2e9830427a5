// SPDX-License-Identifier: Apache-2.0
// The discovery that the kernel runs for bluetoothd, and what others may do to it.
#include "doubles/FakeBluez.h"

namespace nearcast::bluez {

namespace {

// BlueZ, doc/mgmt-api.txt.
constexpr std::uint8_t success = 0x00;
constexpr std::uint8_t busy = 0x0A;
constexpr std::uint8_t rejected = 0x0B;
constexpr std::uint8_t notPowered = 0x0F;
constexpr std::uint8_t invalidIndex = 0x11;

constexpr std::uint32_t answersOfRound = 4;

}  // namespace

bool FakeBluez::runsInKernel(const Adapter& adapter) const {
    const bool bluetoothds = (adapter.ours || adapter.others) && !adapter.dead;
    return adapter.powered && (bluetoothds || adapter.probed || now_ < adapter.orphanUntil);
}

std::optional<std::uint32_t> FakeBluez::events(const std::string& name) const {
    const auto place = adapters_.find(pathOf(name));
    return place == adapters_.end() ? std::nullopt : std::optional(place->second.events);
}

void FakeBluez::endRound() {
    for (auto& [path, adapter] : adapters_) adapter.events += runsInKernel(adapter) ? answersOfRound : 0;
    at(now_ + strictCycle, [this] { endRound(); });
}

void FakeBluez::tellOfKernel() {
    for (auto& [path, adapter] : adapters_) {
        const bool runs = runsInKernel(adapter);
        if (runs == adapter.kernelTold) continue;
        adapter.kernelTold = runs;
        adapter.events += answersOfRound;
        if (kernelDiscovers) kernelDiscovers(path.substr(path.rfind('/') + 1), runs);
    }
}

std::uint8_t FakeBluez::startInKernel(const std::string& name) {
    Adapter* const adapter = find(pathOf(name));
    if (adapter == nullptr) return invalidIndex;
    if (!adapter->powered) return notPowered;
    if (runsInKernel(*adapter)) return busy;
    adapter->probed = true;
    tellOfKernel();
    return success;
}

/// bluetoothd is told of the end, and begins its own discovery again where it has a client that wants one.
std::uint8_t FakeBluez::stopInKernel(const std::string& name) {
    Adapter* const adapter = find(pathOf(name));
    if (adapter == nullptr) return invalidIndex;
    if (!runsInKernel(*adapter)) return rejected;
    adapter->probed = false;
    adapter->orphanUntil = now_;
    adapter->kernelTold = false;
    if (kernelDiscovers) kernelDiscovers(name, false);
    if (daemon_ && !hanging_ && (adapter->ours || adapter->others)) adapter->dead = false;
    at(now_ + latency, [this] { tellOfKernel(); });
    return success;
}

}  // namespace nearcast::bluez
