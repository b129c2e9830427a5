// SPDX-License-Identifier: Apache-2.0
// An application as it is meant to be: the manager, a registered printer, a delegate that counts, and the radio
// `bluez`. Ends at SIGTERM and prints how many reports the radio heard.
#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include "platform/factory/PlatformFactory.h"

#include <atomic>
#include <csignal>
#include <cstdio>

int main() {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigprocmask(SIG_BLOCK, &ends, nullptr);  // in all threads: this one takes it below

    nearcast::PlatformOptions options;
    options.radio = "bluez";
    nearcast::Platform::choose(options);
    std::atomic<unsigned long> heard{0};
    nearcast::chosenPlatform()->monitor->setTap(
        [&](const nearcast::AdvertisingReport&, nearcast::NSDate, bool) { ++heard; });
    auto& manager = nearcast::QXNearcastManager::sharedManager();
    manager.addSettingForPrinterPortName("BT:One", {}, true, "02:00:00:00:00:01", -62, "One");
    auto delegate = std::make_shared<nearcast::QXNearcastManagerDelegate>();
    std::atomic<unsigned long> reported{0};
    delegate->didDiscoverPort = [&](auto, auto, auto, auto) { ++reported; };
    manager.setDelegate(delegate);
    if (!manager.startScan()) return 1;
    int taken = 0;
    sigwait(&ends, &taken);
    manager.stopScan();
    std::printf("%lu\n", heard.load());
}
