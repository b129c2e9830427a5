// SPDX-License-Identifier: Apache-2.0
#include "machine/Facts.h"

#include "platform/bluez/Adapters.h"
#include "platform/factory/AutomaticRadio.h"

#include <algorithm>
#include <string_view>

namespace nearcast::cli {

namespace {

// Debian's place, that of other distributions, and those of older ones.
constexpr std::string_view daemonPlaces[] = {"/usr/libexec/bluetooth/bluetoothd", "/usr/lib/bluetooth/bluetoothd",
                                             "/usr/sbin/bluetoothd", "/usr/local/libexec/bluetooth/bluetoothd"};

std::string firstLine(const std::optional<std::string>& content) {
    return content ? content->substr(0, content->find('\n')) : "";
}

/// The words of a command line, which the kernel ends with a NUL each.
std::vector<std::string_view> wordsOf(std::string_view line) {
    std::vector<std::string_view> words;
    while (!line.empty()) {
        const auto end = std::min(line.size(), line.find('\0'));
        words.push_back(line.substr(0, end));
        line.remove_prefix(std::min(line.size(), end + 1));
    }
    return words;
}

}  // namespace

std::vector<RadioSwitch> bluetoothSwitches(const Machine& machine) {
    const std::string root = "/sys/class/rfkill/";
    std::vector<RadioSwitch> switches;
    for (const std::string& name : machine.folder(root).value_or(std::vector<std::string>())) {
        const std::string path = root + name + "/";
        if (firstLine(machine.file(path + "type")) != "bluetooth") continue;
        RadioSwitch one;
        one.name = firstLine(machine.file(path + "name"));
        if (one.name.empty()) one.name = name;
        one.soft = firstLine(machine.file(path + "soft")) == "1";
        one.hard = firstLine(machine.file(path + "hard")) == "1";
        switches.push_back(std::move(one));
    }
    return switches;
}

Daemon daemonOf(const Machine& machine) {
    Daemon daemon;
    const auto process = machine.bus().process;
    if (!process) return daemon;
    const std::string line = machine.file("/proc/" + std::to_string(*process) + "/cmdline").value_or("");
    const auto words = wordsOf(line);
    if (words.empty()) return daemon;
    daemon.experimental =
        std::any_of(words.begin() + 1, words.end(), [](auto word) { return word == "-E" || word == "--experimental"; });
    const auto* const known = std::find(std::begin(daemonPlaces), std::end(daemonPlaces), words.front());
    if (known != std::end(daemonPlaces)) daemon.version = machine.versionOf(std::string(*known));
    return daemon;
}

bool hasLowEnergy(const BusAdapter& adapter) { return adapter.central.value_or(true); }

const BusAdapter* bestAdapter(const Machine& machine) {
    const auto& adapters = machine.bus().adapters;
    const auto worth = [](const BusAdapter& one) { return bluez::worthOf(hasLowEnergy(one), one.powered); };
    const auto best = std::max_element(adapters.begin(), adapters.end(), [&](const auto& left, const auto& right) {
        return worth(left) < worth(right);  // the first of equals
    });
    return best == adapters.end() ? nullptr : &*best;
}

std::string automaticRadio(const Machine& machine) {
    return nearcast::automaticRadio(
        AvailableRadios{.bluetoothd = machine.bus().available, .controllers = machine.controllers().adapters});
}

}  // namespace nearcast::cli
