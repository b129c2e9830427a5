// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/ModelWorld.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::doubles {

/// A second manager, slow and plain, with a virtual radio: it runs a scenario and lists the events that the real one
/// has to show, trace records and locks included. What nobody prescribes in an event is null, pointers are `<ptr>`.
///
/// It is written from what the manager is to do, step by step, and shares no code with it.
class ModelManager {
public:
    /// @param lines of a scenario without mistakes
    static std::vector<Json> run(const std::vector<std::string>& lines);

private:
    using Text = std::optional<std::string>;
    using Audience = ModelOperation::Audience;

    struct Delegate {
        bool didDiscoverPort = false;
        bool didUpdateState = false;
    };
    struct Entry {
        std::uint64_t capacity = 0;
        std::deque<std::int32_t> raw;
        std::deque<std::int32_t> max;
        std::deque<std::int32_t> output;
        std::int64_t lastUpdate = 0;
    };
    struct Registration {
        bool printer = false;
        Text portName;
        Text portSettings;
        bool useDrawer = false;
        Text MACAddr;
        std::optional<double> threshold;
        Text nickName;
    };
    using Samples = std::vector<std::int32_t>;

    explicit ModelManager(const std::vector<std::string>& lines);

    // ModelManager.cpp
    void perform(const Json& line);
    void call(const std::string& what, const Json& line);
    bool callRegistry(const std::string& what, const Json& line);
    void setDelegate(const Json& line);
    void sharedManager();
    bool isLECapableHardware();
    void changeState(std::int64_t state);
    ModelOperation operation(std::string_view name, Audience audience) { return {world_, name, audience}; }
    void console(const std::string& text) { world_.show("console", {{"text", text}}); }
    void returned(std::string_view of, const Json& value) { world_.show("return", {{"of", of}, {"value", value}}); }

    // ModelRegistry.cpp
    void addSetting(const Json& line, bool printer);
    void add(const Registration& registration, ModelOperation& operation, const std::string& arguments);
    [[noreturn]] void refuse(ModelOperation& operation, const std::string& condition, const std::string& consoleText,
                             const std::string& arguments, const std::string& reason);
    void removeSetting(const Text& portName);
    Json getSettings();
    void setSettings(const Json& settings);
    Json serializedSettings();
    bool deserializeSettings(const std::string& data);
    bool isValidateMACAddr();
    Text getPortNameFromMACAddr(const Text& MACAddr);
    std::string getMACAddressFromName(const Text& name);

    // ModelProximity.cpp
    bool startScan();
    bool startScanning(ModelOperation& operation);
    bool startScanWith(std::uint64_t samplingNumber);
    void stopScan();
    void restartScan();
    void centralStop();
    void centralScan(bool filtered);
    void advertise(const Json& line);
    void didDiscover(ModelOperation& operation, const Json& line);
    Text addressOf(ModelOperation& operation, const std::vector<int>& payload, const Text& name);
    bool consumedByCalibration(ModelOperation& operation, const std::string& address, std::int32_t RSSI);
    std::optional<std::int32_t> smoothed(ModelOperation& operation, const std::string& address, std::int32_t RSSI);
    std::optional<std::int32_t> refreshed(ModelOperation& operation, Entry& entry, std::int32_t RSSI);
    void report(ModelOperation& operation, const std::string& address, std::int32_t output);
    void eventRepeatTimer();
    std::int32_t calibrateActionArea(const Text& MACAddr);
    bool arm(ModelOperation& operation, const Text& MACAddr, const std::shared_ptr<Samples>& samples);
    std::int32_t getRSSI(const Text& MACAddr);

    ModelWorld world_;

    std::optional<Delegate> delegate_;
    std::map<std::string, Json> registry_;
    std::map<std::string, Entry> table_;
    std::uint64_t samplingNumber_ = 7;
    bool scanStart_ = false;
    std::optional<int> restartTimer_;
    std::optional<int> sweepTimer_;
    bool toCalibrate_ = false;
    bool isEnough_ = false;
    Text calibratedAddress_;
    std::shared_ptr<Samples> samples_;

    std::int64_t radioState_ = 5;
    bool radioScans_ = false;
    bool radioFilters_ = false;
};

/// An error that ends an operation, other than a refused registration.
struct ModelError {};
/// A refused registration.
struct ModelRefusal {
    std::string reason;
};

/// The text, or what formatting an absent one gives.
std::string shown(const std::optional<std::string>& text);
/// A member of a line that is a text; nothing where it is missing or null.
std::optional<std::string> textMember(const Json& line, const char* name);
/// A number cut toward zero into 32 bits, clamped.
std::int32_t cutToInt32(double number);
/// The octets of hexadecimal text.
std::vector<int> octetsOf(const std::string& hexadecimal);

}  // namespace nearcast::doubles
