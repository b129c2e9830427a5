// SPDX-License-Identifier: Apache-2.0
#include <nearcast/nearcast.h>

#include <iostream>

int main(int argc, char** argv) {
    using namespace nearcast;
    PlatformOptions options;
    options.radio = argc > 1 ? argv[1] : "auto";
    options.ownLoop = true;
    const Proximity proximity(options, [](const NearestChange& change) { std::cout << change.now.text() << '\n'; });
    proximity.addDevice({.portName = "BT:Front Desk", .address = Address("02:4E:43:00:00:01"), .threshold = -62});
    proximity.addDevice({.portName = "BT:Bar", .address = Address("02:4E:43:00:00:03"), .threshold = -62});
    if (const auto started = proximity.start(); !started) {
        std::cerr << started.why << '\n';
        return 1;
    }
    Platform::runFor(20);
}
