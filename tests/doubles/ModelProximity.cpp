// SPDX-License-Identifier: Apache-2.0
#include "doubles/ModelManager.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace nearcast::doubles {

namespace {

constexpr std::string_view scanLock = "_lockStartScanFlag";
constexpr std::string_view calibrationLock = "_lockCalibrateActionAreaFlag";
constexpr std::string_view tableLock = "_lockRssiDataFlag";
constexpr std::string_view registryLock = "_lockMutableSettingsFlag";
constexpr std::string_view dongleService = "4F37D906-3F43-440C-98E0-9E709971CADF";
constexpr std::string_view duplicate =
    "A duplicate execution reuest with 'startScan' or 'calibrateActionArea' was found.";
constexpr std::int64_t second = 1'000'000;
constexpr std::int32_t noReading = 127;

std::string upperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) { return std::toupper(letter); });
    return text;
}

void enqueue(std::deque<std::int32_t>& queue, std::uint64_t capacity, std::int32_t sample) {
    if (queue.size() == capacity) queue.pop_front();
    queue.push_back(sample);
}

/// The size of a difference in 32-bit arithmetic, which wraps.
std::int32_t difference(std::int32_t left, std::int32_t right) {
    const auto wrapped = static_cast<std::int32_t>(static_cast<std::uint32_t>(std::int64_t{left} - right));
    return wrapped < 0 ? static_cast<std::int32_t>(0U - static_cast<std::uint32_t>(wrapped)) : wrapped;
}

std::int32_t integerOf(const Json& value) {
    if (value.is_boolean()) return value.get<bool>() ? 1 : 0;
    if (value.is_number()) return cutToInt32(value.get<double>());
    if (value.is_string()) return static_cast<std::int32_t>(std::atoi(value.get<std::string>().c_str()));
    return 0;
}

}  // namespace

bool ModelManager::startScan() {
    auto op = operation("startScan", Audience::application);
    op.start("");
    if (!isLECapableHardware()) {
        op.error("[self isLECapableHardware] == NO, <ptr>");
        console("Bluetooth Low Energy is not supported.");
        op.end("-> 0");
        return false;
    }
    getSettings();
    const bool started = startScanning(op);
    op.end(started ? "-> 1" : "-> 0");
    return started;
}

bool ModelManager::startScanning(ModelOperation& op) {
    const ModelLock lock(world_, scanLock);
    if (scanStart_) {
        op.error("scanStart == YES, 1");
        console(std::string(duplicate));
        return false;
    }
    restartTimer_ = world_.startTimer(120 * second, [this] { restartScan(); });
    restartScan();
    sweepTimer_ = world_.startTimer(5 * second, [this] { eventRepeatTimer(); });
    scanStart_ = true;
    return true;
}

bool ModelManager::startScanWith(std::uint64_t samplingNumber) {
    auto op = operation("startScan:", Audience::application);
    const std::string number = std::to_string(samplingNumber);
    op.start(number);
    if (samplingNumber == 0) {
        op.error("samplingNumber == 0, 0");
        op.end("0, -> 0");
        return false;
    }
    samplingNumber_ = samplingNumber;
    const bool started = startScan();
    op.end(number + (started ? ", -> 1" : ", -> 0"));
    return started;
}

void ModelManager::centralStop() {
    world_.show("central", {{"call", "stopScan"}});
    radioScans_ = false;
}

void ModelManager::centralScan(bool filtered) {
    world_.show("central", {{"call", "scanForPeripherals"},
                            {"services", filtered ? Json::array({dongleService}) : Json()},
                            {"allowDuplicates", true}});
    radioScans_ = true;
    radioFilters_ = filtered;
}

void ModelManager::restartScan() {
    auto op = operation("restartScan:", Audience::internal);
    op.start("<ptr>");
    centralStop();
    centralScan(true);
    op.end("<ptr>");
}

void ModelManager::stopScan() {
    auto op = operation("stopScan", Audience::application);
    op.start("");
    {
        const ModelLock lock(world_, scanLock);
        op.process("manager != nil, <ptr>");
        centralStop();
        if (restartTimer_) world_.cancel(*restartTimer_);
        restartTimer_.reset();
        if (sweepTimer_) world_.cancel(*sweepTimer_);
        sweepTimer_.reset();
        toCalibrate_ = false;
        scanStart_ = false;
    }
    op.end("");
}

void ModelManager::advertise(const Json& line) {
    if (!radioScans_) return;
    bool wanted = true;
    if (radioFilters_ && line.contains("services") && !line["services"].is_null()) {
        wanted = false;
        for (const std::string service : line["services"]) wanted = wanted || upperCase(service) == dongleService;
    }
    if (!wanted) return;
    auto op = operation("centralManager:didDiscoverPeripheral:advertisementData:RSSI:", Audience::internal);
    const std::string text = "<ptr>, <ptr>, <ptr>, " + std::to_string(line["RSSI"].get<std::int32_t>());
    op.start(text);
    didDiscover(op, line);
    op.end(text);
}

void ModelManager::didDiscover(ModelOperation& op, const Json& line) {
    if (!delegate_) return op.process("self.delegate == nil, <ptr>");
    const Text data = textMember(line, "manufacturerData");
    if (!data) return op.process("manufactureData == nil, <ptr>");
    const Text address = addressOf(op, octetsOf(*data), textMember(line, "name"));
    if (!address) return;
    const auto RSSI = line["RSSI"].get<std::int32_t>();
    if (RSSI == noReading) return op.error("RSSI.intValue == 127, 127");
    if (address->find("QX") != std::string::npos) return op.error(nullptr);
    if (consumedByCalibration(op, *address, RSSI)) return;
    const auto output = smoothed(op, *address, RSSI);
    if (output) report(op, *address, *output);
}

ModelManager::Text ModelManager::addressOf(ModelOperation& op, const std::vector<int>& payload, const Text& name) {
    if (payload.size() < 2 || payload[0] != 255 || payload[1] != 255) return getMACAddressFromName(name);
    op.process("(manufactureDataBytes[0] == 0xff) && (manufactureDataBytes[1] == 0xff), 255, 255");
    if (payload.size() < 8) {
        op.error(nullptr);
        return std::nullopt;
    }
    char text[32];
    std::snprintf(text, sizeof text, "%02X:%02X:%02X:%02X:%02X:%02X", payload[2], payload[3], payload[4], payload[5],
                  payload[6], payload[7]);
    return text;
}

bool ModelManager::consumedByCalibration(ModelOperation& op, const std::string& address, std::int32_t RSSI) {
    const ModelLock lock(world_, calibrationLock);
    if (!toCalibrate_) return false;
    op.process("toCalibrateActionArea == YES, 1");
    if (calibratedAddress_ != address) {
        op.process("[dongleMACAddress isEqualToString:macAddrForActionArea] == NO, " + address + ", " +
                   shown(calibratedAddress_));
        return true;
    }
    if (isEnough_) return true;
    op.process("isEnoughDataForActionArea == NO, 0");
    samples_->push_back(RSSI);
    if (samples_->size() < 15) return true;
    op.process("rssiDataForActionArea.count >= 15, 15");
    isEnough_ = true;
    return true;
}

std::optional<std::int32_t> ModelManager::smoothed(ModelOperation& op, const std::string& address, std::int32_t RSSI) {
    std::optional<std::int32_t> output;
    {
        const ModelLock lock(world_, tableLock);
        if (!table_.empty()) op.process("rssiData.count != 0, " + std::to_string(table_.size()));
        const auto known = table_.find(address);
        if (known == table_.end()) {
            op.process("lastRssiDic == nil, <ptr>");
            table_[address] = Entry{samplingNumber_, {RSSI}, {}, {}, world_.now()};
            return std::nullopt;
        }
        output = refreshed(op, known->second, RSSI);
        known->second.lastUpdate = world_.now();
    }
    if (!output) op.process("outputRssi == nil, <ptr>");
    return output;
}

std::optional<std::int32_t> ModelManager::refreshed(ModelOperation& op, Entry& entry, std::int32_t RSSI) {
    const std::uint64_t n = samplingNumber_;
    enqueue(entry.raw, entry.capacity, RSSI);
    if (entry.raw.size() < n) {
        op.process("rawRSSIQueue.count < self.samplingNumber, " + std::to_string(entry.raw.size()) + ", " +
                   std::to_string(n));
        return std::nullopt;
    }
    const std::int32_t max = *std::max_element(entry.raw.begin(), entry.raw.end());
    std::int32_t output = max;
    if (entry.output.size() < n) {
        op.process("outputRSSIQueue.count < self.samplingNumber, " + std::to_string(entry.output.size()) + ", " +
                   std::to_string(n));
    } else if (difference(entry.output.back(), max) >= 3) {
        for (std::size_t i = 1; i < entry.max.size(); ++i) {
            if (difference(entry.output[i - 1], entry.max[i]) <= 2) output = entry.output.back();
        }
    }
    enqueue(entry.max, entry.capacity, max);
    enqueue(entry.output, entry.capacity, output);
    return output;
}

void ModelManager::report(ModelOperation& op, const std::string& address, std::int32_t output) {
    if (!delegate_->didDiscoverPort) {
        return op.process(
            "[self.delegate respondsToSelector:@selector(didDiscoverPort:deviceType:MACAddr:RSSI:)] == NO, <ptr>, "
            "<ptr>");
    }
    const Text portName = getPortNameFromMACAddr(address);
    std::int32_t deviceType = 0;
    if (portName) {
        const ModelLock lock(world_, registryLock);
        deviceType = integerOf(registry_[*portName].value("Device Type", Json()));
    } else {
        op.process("registeredPortName == nil, <ptr>");
    }
    world_.show(
        "didDiscoverPort",
        {{"portName", portName.value_or("")}, {"deviceType", deviceType}, {"MACAddr", address}, {"RSSI", output}});
}

void ModelManager::eventRepeatTimer() {
    auto op = operation("eventRepeatTimer", Audience::internal);
    op.start("");
    {
        const ModelLock lock(world_, tableLock);
        const auto snapshot = table_;
        for (const auto& [address, entry] : snapshot) {
            if (entry.lastUpdate + 5 * second > world_.now()) continue;
            if (!delegate_ || !delegate_->didUpdateState) return;
            Text portName = getPortNameFromMACAddr(address);
            if (portName) portName = getPortNameFromMACAddr(address);
            world_.show("didUpdateState", {{"portName", portName.value_or("")}, {"MACAddr", address}});
            table_.erase(address);
        }
    }
    op.end("");
}

bool ModelManager::arm(ModelOperation& op, const Text& MACAddr, const std::shared_ptr<Samples>& samples) {
    const ModelLock lock(world_, scanLock);
    if (scanStart_) {
        op.error("scanStart == YES, 1");
        console(std::string(duplicate));
        return false;
    }
    calibratedAddress_ = MACAddr;
    samples_ = samples;
    toCalibrate_ = true;
    isEnough_ = false;
    centralScan(false);
    scanStart_ = true;
    return true;
}

std::int32_t ModelManager::calibrateActionArea(const Text& MACAddr) {
    auto op = operation("calibrateActionArea:", Audience::application);
    op.start(shown(MACAddr));
    isValidateMACAddr();
    const auto samples = std::make_shared<Samples>();
    if (!arm(op, MACAddr, samples)) {
        op.end(shown(MACAddr) + ", -> 127");
        return noReading;
    }
    for (int pass = 0; pass < 14; ++pass) {
        { const ModelLock lock(world_, calibrationLock); }
        if (isEnough_) break;
        world_.sleep(second / 2);
    }
    stopScan();
    { const ModelLock lock(world_, calibrationLock); }
    if (samples->size() < 15) return noReading;
    std::vector<std::int32_t> used(samples->begin() + 4, samples->end());
    used.insert(used.end(), {-127, -127});
    std::sort(used.rbegin(), used.rend());
    op.end(shown(MACAddr) + ", -> " + std::to_string(used[1]));
    return used[1];
}

std::int32_t ModelManager::getRSSI(const Text& MACAddr) {
    auto op = operation("getRSSI:", Audience::application);
    op.start(shown(MACAddr));
    isValidateMACAddr();
    std::int32_t result = noReading;
    {
        const ModelLock lock(world_, tableLock);
        if (!table_.empty()) {
            op.process("rssiData.count != 0, " + std::to_string(table_.size()));
            const auto found = MACAddr ? table_.find(*MACAddr) : table_.end();
            if (found != table_.end()) {
                op.process("foundRssiDic != nil, <ptr>");
                result = found->second.output.empty() ? 0 : found->second.output.back();
            }
        }
    }
    op.end(shown(MACAddr) + ", -> " + std::to_string(result));
    return result;
}

}  // namespace nearcast::doubles
