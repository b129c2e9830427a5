// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/DongleReader.h"

#include <map>
#include <string>

namespace nearcast::simulator {

namespace {

constexpr double year = 365.0 * 24 * 3600;  // seconds

/// Who has an address or a port name already: text to the path of who has it.
using Taken = std::map<std::string, std::string>;

void requireFree(Taken& taken, const SceneNode& node, const std::string& text) {
    const auto [found, isNew] = taken.emplace(text, node.path());
    if (!isNew) node.refuse("it is the same as " + found->second);
}

/// An address with its letters in upper case, which is how the manager writes those it hears.
std::string readAddress(const SceneNode& node) {
    std::string address = node.text(200);
    bool good = address.size() == 17;
    for (std::size_t index = 0; good && index < address.size(); ++index) {
        char& letter = address[index];
        if (letter >= 'a' && letter <= 'f') letter = static_cast<char>(letter - 'a' + 'A');
        const bool digit = (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'F');
        good = index % 3 == 2 ? letter == ':' : digit;
    }
    if (!good) node.refuse("expected an address of six octets, as in 00:11:22:AA:BB:CC");
    return address;
}

Stretch readStretch(const SceneNode& node, const std::optional<double>& every) {
    const auto times = node.list(2, 2);
    const Stretch stretch{times[0].number({0, year, "s"}), times[1].number({0, year, "s"})};
    if (stretch.to <= stretch.from) node.refuse("expected an end after the beginning");
    if (every && stretch.to > *every) node.refuse("expected an end within offEvery (" + written(*every) + " s)");
    return stretch;
}

Device readDevice(const SceneNode& node) {
    node.requireObject({"portName", "type", "withDrawer", "portSettings", "threshold", "nickName"});
    Device device;
    device.portName = node.need("portName").text(200);
    device.type =
        node.need("type").word<Device::Type>({{"printer", Device::Type::printer}, {"drawer", Device::Type::drawer}});
    if (const auto drawer = node.member("withDrawer")) {
        device.withDrawer = drawer->boolean();
        if (device.type == Device::Type::drawer && !device.withDrawer) drawer->refuse("a drawer is always with drawer");
    }
    if (const auto settings = node.member("portSettings")) device.portSettings = settings->text(200);
    if (const auto threshold = node.member("threshold")) {
        device.threshold = static_cast<std::int32_t>(threshold->wholeNumber({-127, 20, "dBm"}));
    }
    if (const auto name = node.member("nickName")) device.nickName = name->text(200);
    return device;
}

void readOff(const SceneNode& node, Dongle& dongle) {
    if (const auto every = node.member("offEvery")) dongle.offEvery = every->number({0.1, year, "s"});
    const auto off = node.member("off");
    if (!off) return;
    for (const SceneNode& stretch : off->list(0, 1000)) dongle.off.push_back(readStretch(stretch, dongle.offEvery));
}

Dongle readDongle(const SceneNode& node, const Floor& floor, Taken& addresses, Taken& ports) {
    node.requireObject({"address", "at", "txPower", "interval", "payload", "off", "offEvery", "device"});
    Dongle dongle;
    const SceneNode address = node.need("address");
    dongle.address = readAddress(address);
    requireFree(addresses, address, dongle.address);
    dongle.at = readPlace(node.need("at"), floor);
    readNumber(node, "txPower", {-127, 20, "dBm"}, dongle.txPower);
    // The advertising intervals of the Core Specification, Volume 6, Part B, 4.4.2.2.
    readNumber(node, "interval", {0.02, 10'485.759375, "s"}, dongle.interval);
    if (const auto payload = node.member("payload")) {
        dongle.payload = payload->word<Dongle::Payload>(
            {{"data", Dongle::Payload::data}, {"name", Dongle::Payload::name}, {"both", Dongle::Payload::both}});
    }
    readOff(node, dongle);
    if (const auto device = node.member("device")) {
        dongle.device = readDevice(*device);
        requireFree(ports, device->need("portName"), dongle.device->portName);
    }
    return dongle;
}

}  // namespace

Place readPlace(const SceneNode& node, const Floor& floor) {
    const auto numbers = node.list(2, 2);
    return {numbers[0].number({0, floor.width, "m"}), numbers[1].number({0, floor.depth, "m"})};
}

void readNumber(const SceneNode& node, std::string_view name, const Range& range, double& into) {
    if (const auto member = node.member(name)) into = member->number(range);
}

std::vector<Dongle> readDongles(const SceneNode& node, const Floor& floor) {
    Taken addresses;
    Taken ports;
    std::vector<Dongle> dongles;
    for (const SceneNode& dongle : node.list(0, 10'000)) {
        dongles.push_back(readDongle(dongle, floor, addresses, ports));
    }
    return dongles;
}

}  // namespace nearcast::simulator
