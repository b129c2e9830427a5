// SPDX-License-Identifier: Apache-2.0
#include "scenario/ScenarioGenerator.h"

#include <array>
#include <limits>
#include <utility>

namespace nearcast::scenario {

namespace {

constexpr std::string_view discovers = "didDiscoverPort:deviceType:MACAddr:RSSI:";
constexpr std::string_view updates = "didUpdateState:MACAddr:";

constexpr const char* names[] = {"QX021A2B3C4D5E",
                                 "QX021a2b3c4d5eXYZ",
                                 "QX021A2",
                                 "Thermo",
                                 "été à Nîmes, 20h",
                                 "QXéàüßøåñçêëîï",
                                 "xxQXQXQXQXQXQX",
                                 "14 characters!",
                                 "13 characters",
                                 "👍👍00112233445566",
                                 ""};
constexpr const char* payloads[] = {"FFFF001122AABBCC",
                                    "FFFF001122AABBCC",
                                    "FFFF0A0B0C0D0E0F",
                                    "ffffdeadbeef0001",
                                    "FFFF001122AABBCC0102",
                                    "FFFF0A0B0C0D0E",
                                    "FFFF",
                                    "FF",
                                    "",
                                    "4C000215",
                                    "FF00001122AABBCC",
                                    "00FF001122AABBCC"};
constexpr const char* services[] = {"4F37D906-3F43-440C-98E0-9E709971CADF", "4f37d906-3f43-440c-98e0-9e709971cadf",
                                    "180F", "4F37D9063F43440C98E09E709971CADF", "not a UUID"};

constexpr std::int64_t shortSteps[] = {0, 1'000, 10'000, 33'333, 100'000, 100'000, 250'000, 500'000};
constexpr std::int64_t longSteps[] = {0,         100'000,   500'000,   1'000'000,   2'500'000,
                                      4'900'000, 5'000'000, 5'100'000, 115'000'000, 120'000'000};

enum Kind : std::size_t {
    kindAdvertise,
    kindBurst,
    kindAdd,
    kindRemove,
    kindSettings,
    kindSetSettings,
    kindSerialize,
    kindDeserialize,
    kindStart,
    kindStop,
    kindCalibrate,
    kindGetRSSI,
    kindRadio,
    kindDelegate,
    kindShared,
    kindEnd,
    kindCount,
};

}  // namespace

/// How a scenario begins and how often each kind of line comes.
struct ScenarioGenerator::Subject {
    enum class Opening { none, delegate, scan } opening;
    std::uint64_t longSteps;  ///< of ten steps in time
    std::array<std::uint64_t, kindCount> weights;
};

namespace {

using Opening = ScenarioGenerator::Subject::Opening;

// clang-format off
//                        long   adv burst add rem get set save load start stop cal rssi radio del shared end
constexpr ScenarioGenerator::Subject subjects[] = {
    {Opening::none,       3,    {30, 2,    4,  2,  2,  1,  1,   2,   6,    3,   2,  5,   3,    4,  1,     2}},
    {Opening::scan,       2,    {60, 3,    8,  1,  0,  1,  0,   1,   3,    1,   0,  6,   0,    2,  0,     1}},
    {Opening::delegate,   1,    {15, 12,   1,  0,  0,  0,  0,   0,   2,    3,   8,  2,   1,    1,  0,     1}},
    {Opening::none,       2,    {4,  0,    20, 8,  6,  6,  8,   12,  1,    0,   0,  1,   0,    1,  1,     0}},
    {Opening::none,       2,    {6,  0,    1,  0,  0,  0,  0,   0,   12,   6,   3,  1,   12,   2,  1,     1}},
};
// clang-format on

}  // namespace

ScenarioGenerator::ScenarioGenerator(Random random)
    : random_(std::move(random)), blobs_(random_), subject_(random_.pick(subjects)) {}

void ScenarioGenerator::passTime() {
    at_ += random_.below(10) < subject_.longSteps ? random_.pick(longSteps) : random_.pick(shortSteps);
}

void ScenarioGenerator::add(Json line) {
    if (random_.oneIn(4)) {
        if (random_.oneIn(8)) line["at"] = nullptr;
    } else {
        passTime();
        // Now and then a time that has passed already.
        const std::int64_t at = random_.oneIn(20) ? at_ - random_.between(0, 3'000'000) : at_;
        line["at"] = static_cast<double>(at) / 1e6;
    }
    lines_.push_back(line.dump());
}

ScenarioGenerator::Json ScenarioGenerator::setDelegate() {
    Json line{{"do", "setDelegate"}};
    if (random_.oneIn(6)) return line;
    line["implements"] = Json::array();
    if (!random_.oneIn(4)) line["implements"].push_back(discovers);
    if (!random_.oneIn(3)) line["implements"].push_back(updates);
    if (random_.oneIn(6)) line["implements"].push_back("didUpdateState:");
    return line;
}

ScenarioGenerator::Json ScenarioGenerator::addSetting() {
    constexpr const char* nickNames[] = {"Till 1", "", "Küche", "%@"};
    constexpr const char* portSettings[] = {"mini", "", "9600,n,8", "%d"};
    constexpr double thresholds[] = {-65, -65.9, 0.99, -0.5, 1e10, -1e300, 2147483647.5, -2147483648.0, 0};
    const bool printer = random_.oneIn(2);
    Json line{{"do", printer ? "addSettingForPrinterPortName" : "addSettingForTFTillfoxPortName"}};
    if (!random_.oneIn(12)) line["portName"] = blobs_.portName();
    if (!random_.oneIn(12)) line["dongleMACAddr"] = random_.oneIn(3) ? "00:11:22:AA:BB:CC" : blobs_.address();
    if (random_.oneIn(2)) line["nickName"] = random_.pick(nickNames);
    if (random_.oneIn(2)) line["portSettings"] = random_.pick(portSettings);
    if (printer && random_.oneIn(2)) line["withDrawer"] = random_.oneIn(2);
    if (random_.oneIn(2)) line["RSSIthreshould"] = random_.pick(thresholds);
    if (random_.oneIn(3)) line["RSSIthreshould"] = random_.between(-100, 10);
    if (random_.oneIn(12)) line["nickName"] = nullptr;
    return line;
}

ScenarioGenerator::Json ScenarioGenerator::setSettings() {
    Json line{{"do", "setSettings"}};
    if (!random_.oneIn(6)) line["settings"] = random_.oneIn(8) ? Json() : blobs_.registry(false);
    return line;
}

ScenarioGenerator::Json ScenarioGenerator::deserializeSettings() {
    constexpr std::string_view digits = "0123456789abcdef";
    Json line{{"do", "deserializeSettings"}};
    const std::string blob = blobs_.blob();
    line["data"] = blob;
    try {
        if (!random_.oneIn(4)) return Json::parse(line.dump());
    } catch (const Json::exception&) {  // not UTF-8: it has to go as octets
    }
    line.erase("data");
    std::string octets;
    for (const char letter : blob) {
        octets.push_back(digits[static_cast<unsigned char>(letter) >> 4]);
        octets.push_back(digits[static_cast<unsigned char>(letter) & 15]);
    }
    line["dataHex"] = octets;
    return line;
}

ScenarioGenerator::Json ScenarioGenerator::startScan() {
    constexpr std::uint64_t large[] = {64, 1000, std::numeric_limits<std::uint32_t>::max(),
                                       std::numeric_limits<std::uint64_t>::max()};
    Json line{{"do", "startScan"}};
    if (random_.oneIn(3)) return line;
    line["samplingNumber"] = random_.oneIn(10) ? random_.pick(large) : random_.below(6);
    return line;
}

ScenarioGenerator::Json ScenarioGenerator::radio() {
    constexpr std::int64_t odd[] = {
        6, 7, 100, -1, std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()};
    if (random_.oneIn(8)) return {{"do", "radio"}, {"state", random_.pick(odd)}};
    return {{"do", "radio"}, {"state", random_.oneIn(2) ? std::int64_t{5} : random_.between(0, 6)}};
}

ScenarioGenerator::Json ScenarioGenerator::withAddress(std::string_view what) {
    Json line{{"do", what}};
    if (random_.oneIn(12)) return line;
    line["MACAddr"] = random_.oneIn(3) ? blobs_.address() : "00:11:22:AA:BB:CC";
    return line;
}

std::int64_t ScenarioGenerator::RSSI() {
    constexpr std::int64_t odd[] = {127,
                                    -127,
                                    -128,
                                    0,
                                    20,
                                    126,
                                    128,
                                    -1000,
                                    std::numeric_limits<std::int32_t>::max(),
                                    std::numeric_limits<std::int32_t>::min()};
    if (random_.oneIn(12)) return random_.pick(odd);
    return random_.oneIn(3) ? random_.between(-90, -30) : random_.between(-64, -58);
}

ScenarioGenerator::Json ScenarioGenerator::advertise() {
    Json line{{"do", "advertise"}, {"RSSI", RSSI()}};
    if (!random_.oneIn(20)) line["manufacturerData"] = random_.oneIn(3) ? random_.pick(payloads) : payloads[0];
    if (random_.oneIn(3)) line["name"] = random_.pick(names);
    if (random_.oneIn(10)) {
        line["services"] = Json::array();
        while (!random_.oneIn(3)) line["services"].push_back(random_.pick(services));
    }
    if (random_.oneIn(20)) line["name"] = nullptr;
    return line;
}

/// One dongle, many times in quick succession.
void ScenarioGenerator::burst() {
    const std::string payload = random_.oneIn(4) ? random_.pick(payloads) : payloads[0];
    const std::int64_t step = random_.between(1, 300) * 1'000;
    for (std::int64_t count = random_.between(5, 20); count > 0; --count) {
        at_ += step;
        Json line{{"at", static_cast<double>(at_) / 1e6}, {"do", "advertise"}, {"manufacturerData", payload}};
        line["RSSI"] = RSSI();
        lines_.push_back(line.dump());
    }
}

ScenarioGenerator::Json ScenarioGenerator::lineOf(std::size_t kind) {
    switch (kind) {
        case kindAdvertise: return advertise();
        case kindAdd: return addSetting();
        case kindRemove: {
            Json line{{"do", "removeSettingWithPortName"}};
            if (!random_.oneIn(8)) line["portName"] = blobs_.portName();
            return line;
        }
        case kindSettings: return {{"do", "settings"}};
        case kindSetSettings: return setSettings();
        case kindSerialize: return {{"do", "serializedSettings"}};
        case kindDeserialize: return deserializeSettings();
        case kindStart: return startScan();
        case kindStop: return {{"do", "stopScan"}};
        case kindCalibrate: return withAddress("calibrateActionArea");
        case kindGetRSSI: return withAddress("getRSSI");
        case kindRadio: return radio();
        case kindDelegate: return setDelegate();
        case kindShared: return {{"do", "sharedManager"}};
        default: return {{"do", "end"}};
    }
}

void ScenarioGenerator::oneLine() {
    std::uint64_t total = 0;
    for (const std::uint64_t weight : subject_.weights) total += weight;
    std::uint64_t chosen = random_.below(total);
    std::size_t kind = 0;
    while (chosen >= subject_.weights[kind]) chosen -= subject_.weights[kind++];
    if (kind == kindBurst) return burst();
    add(lineOf(kind));
}

std::vector<std::string> ScenarioGenerator::lines() {
    if (subject_.opening != Opening::none || random_.oneIn(2)) {
        lines_.push_back(Json{{"do", "setDelegate"}, {"implements", {discovers, updates}}}.dump());
    }
    if (subject_.opening == Opening::scan) add({{"do", "startScan"}, {"samplingNumber", random_.between(1, 4)}});
    for (std::int64_t count = random_.between(5, 60); count > 0; --count) oneLine();
    if (random_.oneIn(2)) add({{"do", "end"}});
    return std::move(lines_);
}

}  // namespace nearcast::scenario
