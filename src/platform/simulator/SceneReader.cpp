// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SceneReader.h"

#include "platform/json/JSONSerialization.h"

#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace nearcast::simulator {

namespace {

constexpr std::size_t largestFile = 16 * 1024 * 1024;  // octets
constexpr double year = 365.0 * 24 * 3600;             // seconds

/// A list of two numbers, on the floor.
Place readPlace(const SceneNode& node, const Floor& floor) {
    const auto numbers = node.list(2, 2);
    return {numbers[0].number({0, floor.width, "m"}), numbers[1].number({0, floor.depth, "m"})};
}

/// Reads a number that may be left out; then `into` keeps its default.
void readNumber(const SceneNode& node, std::string_view name, const Range& range, double& into) {
    if (const auto member = node.member(name)) into = member->number(range);
}

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

/// The scene's dongles. No two have one address, no two devices one port name.
std::vector<Dongle> readDongles(const SceneNode& node, const Floor& floor) {
    Taken addresses;
    Taken ports;
    std::vector<Dongle> dongles;
    for (const SceneNode& dongle : node.list(0, 10'000)) {
        dongles.push_back(readDongle(dongle, floor, addresses, ports));
    }
    return dongles;
}

Wall readWall(const SceneNode& node, const Floor& floor) {
    node.requireObject({"name", "points", "loss"});
    Wall wall;
    if (const auto name = node.member("name")) wall.name = name->text(200);
    for (const SceneNode& point : node.need("points").list(2, 1000)) wall.points.push_back(readPlace(point, floor));
    wall.loss = node.need("loss").number({0, 100, "dB"});
    return wall;
}

Floor readFloor(const SceneNode& node) {
    node.requireObject({"width", "depth", "walls"});
    Floor floor;
    floor.width = node.need("width").number({1, 10'000, "m"});
    floor.depth = node.need("depth").number({1, 10'000, "m"});
    if (const auto walls = node.member("walls")) {
        for (const SceneNode& wall : walls->list(0, 1000)) floor.walls.push_back(readWall(wall, floor));
    }
    return floor;
}

Waypoint readWaypoint(const SceneNode& node, const Floor& floor) {
    node.requireObject({"at", "pause", "facing"});
    Waypoint waypoint;
    waypoint.at = readPlace(node.need("at"), floor);
    if (const auto pause = node.member("pause")) waypoint.pause = pause->number({0, 24 * 3600, "s"});
    if (const auto facing = node.member("facing")) waypoint.facing = facing->number({-360, 360, "degrees"});
    return waypoint;
}

User readUser(const SceneNode& node, const Floor& floor) {
    node.requireObject({"path", "speed", "loop", "bodyLoss"});
    User user;
    for (const SceneNode& place : node.need("path").list(1, 10'000)) user.path.push_back(readWaypoint(place, floor));
    readNumber(node, "speed", {0.01, 50, "m/s"}, user.speed);
    if (const auto loop = node.member("loop")) user.loop = loop->boolean();
    readNumber(node, "bodyLoss", {0, 60, "dB"}, user.bodyLoss);
    return user;
}

Air readAir(const SceneNode& node) {
    node.requireObject({"lossAtOneMetre", "exponent", "placeDeviation", "placeDistance", "driftDeviation", "driftTime",
                        "echo", "jitterDeviation", "loss"});
    Air air;
    readNumber(node, "lossAtOneMetre", {0, 150, "dB"}, air.lossAtOneMetre);
    readNumber(node, "exponent", {0, 10, ""}, air.exponent);
    readNumber(node, "placeDeviation", {0, 30, "dB"}, air.placeDeviation);
    readNumber(node, "placeDistance", {0.01, 1000, "m"}, air.placeDistance);
    readNumber(node, "driftDeviation", {0, 30, "dB"}, air.driftDeviation);
    readNumber(node, "driftTime", {0.01, 24 * 3600, "s"}, air.driftTime);
    readNumber(node, "echo", {0, 0.95, ""}, air.echo);
    readNumber(node, "jitterDeviation", {0, 30, "dB"}, air.jitterDeviation);
    readNumber(node, "loss", {0, 1, ""}, air.loss);
    return air;
}

Receiver readReceiver(const SceneNode& node) {
    node.requireObject({"sensitivity", "channelTime", "unreadable"});
    Receiver receiver;
    readNumber(node, "sensitivity", {-200, 20, "dBm"}, receiver.sensitivity);
    readNumber(node, "channelTime", {0.001, 100, "s"}, receiver.channelTime);
    readNumber(node, "unreadable", {0, 1, ""}, receiver.unreadable);
    return receiver;
}

RadioChange readRadioChange(const SceneNode& node, const std::vector<RadioChange>& before) {
    node.requireObject({"at", "state"});
    RadioChange change;
    change.at = node.need("at").number({0, year, "s"});
    if (!before.empty() && change.at <= before.back().at) {
        node.need("at").refuse("expected a time after the one before it (" + written(before.back().at) + ")");
    }
    change.state = node.need("state").word<CBManagerState>({{"unknown", CBManagerStateUnknown},
                                                            {"resetting", CBManagerStateResetting},
                                                            {"unsupported", CBManagerStateUnsupported},
                                                            {"unauthorized", CBManagerStateUnauthorized},
                                                            {"poweredOff", CBManagerStatePoweredOff},
                                                            {"poweredOn", CBManagerStatePoweredOn}});
    return change;
}

Scene readRoot(const SceneNode& node) {
    node.requireObject({"name", "seed", "duration", "floor", "user", "air", "receiver", "dongles", "radio"});
    Scene scene;
    if (const auto name = node.member("name")) scene.name = name->text(200);
    if (const auto seed = node.member("seed")) scene.seed = seed->unsignedNumber();
    if (const auto duration = node.member("duration")) scene.duration = duration->number({0, year, "s"});
    scene.floor = readFloor(node.need("floor"));
    scene.user = readUser(node.need("user"), scene.floor);
    if (const auto air = node.member("air")) scene.air = readAir(*air);
    if (const auto receiver = node.member("receiver")) scene.receiver = readReceiver(*receiver);
    scene.dongles = readDongles(node.need("dongles"), scene.floor);
    if (const auto radio = node.member("radio")) {
        for (const SceneNode& change : radio->list(0, 10'000)) {
            scene.radio.push_back(readRadioChange(change, scene.radio));
        }
    }
    return scene;
}

[[noreturn]] void refuseFile(const std::string& path, const std::string& why) { throw SceneError(path + ": " + why); }

}  // namespace

Scene sceneFrom(const SettingValue& value, std::string_view name) {
    try {
        return readRoot(SceneNode(value, "$"));
    } catch (const SceneError& error) {
        throw SceneError(std::string(name) + ": " + error.what());
    }
}

Scene readScene(std::string_view text, std::string_view name) {
    const auto parsed = JSONSerialization::parse(text);
    if (const auto* problem = std::get_if<JSONProblem>(&parsed)) {
        refuseFile(std::string(name), notJSON(placeOf(text, problem->offset), problem->text));
    }
    return sceneFrom(std::get<SettingValue>(parsed), name);
}

Scene readSceneFile(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (!file) throw std::system_error(errno, std::generic_category(), path + ": cannot be opened");
    std::string text(largestFile + 1, '\0');
    text.resize(std::fread(text.data(), 1, text.size(), file.get()));
    if (std::ferror(file.get()) != 0)
        throw std::system_error(errno, std::generic_category(), path + ": cannot be read");
    if (text.size() > largestFile) refuseFile(path, "larger than 16 MiB");
    return readScene(text, path);
}

}  // namespace nearcast::simulator
