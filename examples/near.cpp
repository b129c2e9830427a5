// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Nearest.h>
#include <nearcast/Platform.h>

#include <iostream>

int main(int argc, char** argv) {
    nearcast::PlatformOptions options;
    options.radio = argc > 1 ? argv[1] : "auto";
    options.ownLoop = true;
    nearcast::Platform::choose(options);

    auto& manager = nearcast::QXNearcastManager::sharedManager();
    manager.addSettingForPrinterPortName("BT:Front Desk", {}, true, "02:4E:43:00:00:01", -62, "Front desk");
    manager.addSettingForPrinterPortName("BT:Bar", {}, false, "02:4E:43:00:00:03", -62, "Bar");
    auto nearest = std::make_shared<nearcast::Nearest>(
        manager, [](const nearcast::NearestChange& change) { std::cout << change.now.text() << '\n'; });
    manager.setDelegate(nearest);
    nearcast::Platform::setTap(nearest->tap());
    if (!manager.startScan()) return 1;
    for (int i = 0; i < 40 && nearcast::Platform::runFor(0.5); ++i) nearest->update();
    manager.stopScan();
}
