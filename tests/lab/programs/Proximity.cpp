// SPDX-License-Identifier: Apache-2.0
// An application of the public interface, worked by lines on standard input, for the lab's tests:
//
//     lab_proximity RADIO
//
//     register PORT ADDRESS     -> TIME registered
//     start                     -> TIME started 0|1
//     stop                      -> TIME stopped
//     calibrate ADDRESS         -> TIME calibrated RSSI
//     rssi ADDRESS              -> TIME rssi RSSI
//     health                    -> TIME health STATE RESTARTS WHY
//
// Beside the answers it writes what the delegate is told, and each restart of the scan:
//
//     TIME discovered PORT ADDRESS RSSI
//     TIME silent PORT ADDRESS
//     TIME restart
//
// TIME is in seconds since the machine's start. It ends with its input.
#include <nearcast/LogWriter.h>
#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace {

/// Writes a line at once, from any thread.
void note(const std::string& what) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    std::printf("%.6f %s\n", nearcast::Platform::now(), what.c_str());
    std::fflush(stdout);
}

std::shared_ptr<nearcast::QXNearcastManagerDelegate> makeDelegate() {
    auto delegate = std::make_shared<nearcast::QXNearcastManagerDelegate>();
    delegate->didDiscoverPort = [](std::string_view portName, nearcast::QXDeviceType, std::string_view MACAddr,
                                   std::int32_t RSSI) {
        note("discovered " + std::string(portName) + " " + std::string(MACAddr) + " " + std::to_string(RSSI));
    };
    delegate->didUpdateState = [](std::string_view portName, std::string_view MACAddr) {
        note("silent " + std::string(portName) + " " + std::string(MACAddr));
    };
    return delegate;
}

/// The manager says when it begins its scan anew, every 120 seconds.
void noteRestarts() {
    nearcast::LogWriter::Options options;
    options.sink = [](const nearcast::LogRecord& record) {
        const bool entered = record.logType == nearcast::QXLogTypeInternalMethodStart;
        if (entered && record.methodName.find("restartScan:") != std::string_view::npos) note("restart");
    };
    nearcast::LogWriter::sharedInstance().start(options);
}

void obey(nearcast::QXNearcastManager& manager, const std::string& line) {
    std::istringstream words(line);
    std::string verb;
    std::string first;
    std::string second;
    words >> verb >> first >> second;
    if (verb == "register") {
        manager.addSettingForPrinterPortName(first, {}, false, second, -60.0, {});
        note("registered");
    } else if (verb == "start") {
        note("started " + std::to_string(int{manager.startScan()}));
    } else if (verb == "stop") {
        manager.stopScan();
        note("stopped");
    } else if (verb == "calibrate") {
        note("calibrated " + std::to_string(manager.calibrateActionArea(first)));
    } else if (verb == "rssi") {
        note("rssi " + std::to_string(manager.getRSSI(first)));
    } else if (verb == "health") {
        const nearcast::RadioHealth health = nearcast::Platform::radioHealth();
        note("health " + std::to_string(health.state) + " " + std::to_string(health.restarts) + " " + health.why);
    } else {
        throw std::invalid_argument("there is no command '" + verb + "'");
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        nearcast::PlatformOptions options;
        options.radio = argc > 1 ? argv[1] : "auto";
        nearcast::Platform::choose(options);
        noteRestarts();
        nearcast::QXNearcastManager& manager = nearcast::QXNearcastManager::sharedManager();
        manager.setDelegate(makeDelegate());
        for (std::string line; std::getline(std::cin, line);) obey(manager, line);
        manager.stopScan();
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lab_proximity: %s\n", error.what());
        return 1;
    }
}
