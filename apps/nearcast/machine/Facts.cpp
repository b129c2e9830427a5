// SPDX-License-Identifier: Apache-2.0
#include "machine/Facts.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

namespace nearcast::cli {

namespace {

// capabilities(7), linux/capability.h
constexpr unsigned capNetAdmin = 12;
constexpr unsigned capNetRaw = 13;

// Debian's place, that of other distributions, and those of older ones.
constexpr std::string_view daemonPlaces[] = {"/usr/libexec/bluetooth/bluetoothd", "/usr/lib/bluetooth/bluetoothd",
                                             "/usr/sbin/bluetoothd", "/usr/local/libexec/bluetooth/bluetoothd"};

/// Connections stand beside adapters: "hci0:11".
bool isAdapter(std::string_view name) {
    constexpr std::string_view prefix = "hci";
    if (!name.starts_with(prefix) || name.size() == prefix.size()) return false;
    return name.find_first_not_of("0123456789", prefix.size()) == std::string_view::npos;
}

/// By number: hci2 before hci10.
bool lowerAdapter(const std::string& left, const std::string& right) {
    return left.size() != right.size() ? left.size() < right.size() : left < right;
}

std::string firstLine(const std::optional<std::string>& content) {
    return content ? content->substr(0, content->find('\n')) : "";
}

std::uint64_t effectiveCapabilities(const std::string& status) {
    constexpr std::string_view field = "CapEff:";
    const auto place = status.find(field);
    if (place == std::string::npos) return 0;
    const auto digits = std::min(status.size(), status.find_first_not_of(" \t", place + field.size()));
    std::uint64_t value = 0;
    std::from_chars(status.data() + digits, status.data() + status.size(), value, 16);
    return value;
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

std::optional<std::vector<std::string>> kernelAdapters(const Machine& machine) {
    auto names = machine.folder("/sys/class/bluetooth");
    if (!names) return std::nullopt;
    std::erase_if(*names, [](const std::string& name) { return !isAdapter(name); });
    std::sort(names->begin(), names->end(), lowerAdapter);
    return names;
}

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

SocketCapabilities socketCapabilities(const Machine& machine) {
    const std::uint64_t effective = effectiveCapabilities(machine.file("/proc/self/status").value_or(""));
    return {(effective >> capNetAdmin & 1) != 0, (effective >> capNetRaw & 1) != 0};
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

std::string automaticRadio(const Machine& machine) {
    if (machine.bus().bluetoothd) return "bluez";
    const auto adapters = kernelAdapters(machine);
    if (!adapters || adapters->empty()) return "none";
    return "hci:" + adapters->front().substr(3);
}

}  // namespace nearcast::cli
