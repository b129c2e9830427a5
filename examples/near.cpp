// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include <iostream>

int main(int argc, char** argv) {
    nearcast::PlatformOptions options;
    options.radio = argc > 1 ? argv[1] : "auto";
    options.ownLoop = true;
    nearcast::Platform::choose(options);

    auto& manager = nearcast::QXNearcastManager::sharedManager();
    manager.addSettingForPrinterPortName("BT:Front Desk", {}, true, "02:4E:43:00:00:01", -62, "Front desk");
    auto delegate = std::make_shared<nearcast::QXNearcastManagerDelegate>();
    delegate->didDiscoverPort = [](auto portName, auto, auto MACAddr, auto RSSI) {
        std::cout << portName << " (" << MACAddr << ") is heard with " << RSSI << " dBm\n";
    };
    delegate->didUpdateState = [](auto portName, auto MACAddr) {
        std::cout << portName << " (" << MACAddr << ") has fallen silent\n";
    };
    manager.setDelegate(delegate);
    if (!manager.startScan()) return 1;
    nearcast::Platform::runFor(20);
    manager.stopScan();
}
