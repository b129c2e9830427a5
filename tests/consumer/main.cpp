// SPDX-License-Identifier: Apache-2.0
// An application as its users write it: it registers a printer and prints who is near on the simulator.
#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include <iostream>
#include <memory>

namespace {

/// The registry refuses a second device of that name: an exception of the library's, caught by its type here.
bool refusesTheSameAgain(nearcast::QXNearcastManager& manager) {
    try {
        manager.addSettingForPrinterPortName("BT:Front Desk", {}, true, "02:4E:43:00:00:01", -62, "Front desk");
    } catch (const nearcast::PortException& refusal) {
        std::cout << "refused: " << refusal.reason() << "\n";
        return true;
    }
    return false;
}

}  // namespace

int main() {
    nearcast::PlatformOptions options;
    options.radio = "simulator?speed=max";
    options.ownLoop = true;
    nearcast::Platform::choose(options);

    auto& manager = nearcast::QXNearcastManager::sharedManager();
    manager.addSettingForPrinterPortName("BT:Front Desk", {}, true, "02:4E:43:00:00:01", -62, "Front desk");
    if (!refusesTheSameAgain(manager)) return 1;

    int reports = 0;
    auto delegate = std::make_shared<nearcast::QXNearcastManagerDelegate>();
    delegate->didDiscoverPort = [&](auto portName, auto, auto MACAddr, auto RSSI) {
        if (portName.empty()) return;
        if (++reports <= 3) std::cout << portName << " (" << MACAddr << ") is near: " << RSSI << " dBm\n";
    };
    manager.setDelegate(delegate);
    if (!manager.startScan()) return 1;
    nearcast::Platform::runFor(20);
    manager.stopScan();
    manager.setDelegate(nullptr);
    std::cout << reports << " reports\n";
    return reports > 0 ? 0 : 1;
}
