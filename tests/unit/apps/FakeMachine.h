// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machine/Machine.h"

#include <map>
#include <set>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// A machine made of what a test says is there. Folders are there with the files in them.
class FakeMachine : public Machine {
public:
    std::map<std::string, std::string> files;
    std::map<std::string, std::string> versions;
    HciAdapterList kernel;
    Capabilities allowed;
    BusReading reading;

    [[nodiscard]] std::optional<std::string> file(const std::string& path) const override {
        const auto found = files.find(path);
        return found == files.end() ? std::nullopt : std::optional(found->second);
    }
    [[nodiscard]] std::optional<std::vector<std::string>> folder(const std::string& path) const override {
        const std::string prefix = path.ends_with('/') ? path : path + "/";
        std::set<std::string> names;
        for (auto next = files.lower_bound(prefix); next != files.end() && next->first.starts_with(prefix); ++next) {
            const std::string rest = next->first.substr(prefix.size());
            names.insert(rest.substr(0, rest.find('/')));
        }
        if (names.empty()) return std::nullopt;
        names.erase("");
        return std::vector<std::string>(names.begin(), names.end());
    }
    [[nodiscard]] std::optional<std::string> versionOf(const std::string& program) const override {
        const auto found = versions.find(program);
        return found == versions.end() ? std::nullopt : std::optional(found->second);
    }
    [[nodiscard]] const HciAdapterList& controllers() const override { return kernel; }
    [[nodiscard]] Capabilities capabilities() const override { return allowed; }
    [[nodiscard]] std::string program() const override { return "/usr/bin/nearcast"; }
    [[nodiscard]] const BusReading& bus() const override { return reading; }
};

/// A controller that nothing is wrong with.
inline HciAdapter controller(int index) {
    HciAdapter adapter;
    adapter.index = index;
    adapter.name = "hci" + std::to_string(index);
    adapter.address = {0x02, 0x4E, 0x43, 0x00, 0x00, 0xAA};
    adapter.bus = "USB";
    adapter.lowEnergy = true;
    return adapter;
}

/// A machine on which everything is as it should be: one adapter, and bluetoothd.
inline FakeMachine goodMachine() {
    FakeMachine machine;
    machine.files = {
        {"/proc/sys/kernel/osrelease", "6.1.0-18-amd64\n"},
        {"/proc/412/cmdline", std::string("/usr/libexec/bluetooth/bluetoothd\0", 34)},
        {"/sys/module/btusb/refcnt", "1\n"},
        {"/sys/class/rfkill/rfkill0/type", "wlan\n"},
        {"/sys/class/rfkill/rfkill0/soft", "1\n"},
        {"/sys/class/rfkill/rfkill1/type", "bluetooth\n"},
        {"/sys/class/rfkill/rfkill1/name", "hci0\n"},
        {"/sys/class/rfkill/rfkill1/soft", "0\n"},
        {"/sys/class/rfkill/rfkill1/hard", "0\n"},
    };
    machine.versions = {{"/usr/libexec/bluetooth/bluetoothd", "5.66"}};
    machine.kernel.adapters = {controller(0)};
    machine.allowed = {true, true};
    machine.reading.bluetoothd = true;
    machine.reading.available = true;
    machine.reading.process = 412;
    machine.reading.adapters = {{"hci0", "02:4E:43:00:00:AA", true, false, true, true}};
    return machine;
}

}  // namespace nearcast::cli
