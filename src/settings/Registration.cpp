// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"
#include "support/Number.h"

namespace nearcast {

namespace {

/// The texts in which the two kinds of registration differ. The differences are part of the interface.
struct Words {
    std::string_view missingConsole;  ///< the port name or the address is absent
    std::string_view missingReason;
    std::string_view addressInUseReason;
};

constexpr Words printerWords{
    "portName or MACAddr is nil",
    "portName or dongle MAC address is nil.",
    "The specified dongle MAC address is already in use.",
};
constexpr Words drawerWords{
    "portName or MACAddr is nil.",
    "portName or dongleMACAddr is nil.",
    "The specified dongleMACAddr is already in use.",
};

std::string textOf(Manager::Text text) { return std::string(text.value_or("(null)")); }

}  // namespace

/// One call of a registration operation.
struct Manager::Registration {
    Text portName;
    Text portSettings;
    bool drawerGiven = false;  ///< the printer's operation, which lists the drawer among its arguments
    bool withDrawer = false;
    Text MACAddr;
    std::optional<double> Threshold;
    Text nickName;
    QXDeviceType deviceType = QXDeviceTypeUnknown;
    const Words* words = nullptr;

    /// "Threshold RSSI": cut toward zero and clamped; 0 where it is absent.
    [[nodiscard]] std::int32_t thresholdRSSI() const { return int32FromNumber(Threshold.value_or(0)); }
    /// The arguments as trace records list them.
    [[nodiscard]] std::string arguments() const;
    /// The record without port settings and threshold.
    [[nodiscard]] SettingRecord record() const;
};

std::string Manager::Registration::arguments() const {
    std::string text = textOf(portName) + ", " + textOf(portSettings) + ", ";
    if (drawerGiven) text += withDrawer ? "1, " : "0, ";
    return text + textOf(MACAddr) + ", " + std::to_string(thresholdRSSI()) + ", " + textOf(nickName);
}

SettingRecord Manager::Registration::record() const {
    SettingRecord record;
    record.emplace(kQXDeviceType, deviceType);
    record.emplace(kQXWithDrawer, withDrawer);
    record.emplace(kQXNickName, textOf(nickName));
    record.emplace(kQXDongleMACAddr, std::string(*MACAddr));
    return record;
}

void Manager::addSettingForPrinterPortName(Text portName, Text portSettings, bool useDrawer, Text MACAddr,
                                           std::optional<double> Threshold, Text nickName) {
    addSetting(trace("-[QXNearcastManager addSettingForPrinterPortName:portSettings:withDrawer:dongleMACAddr:"
                     "RSSIthreshould:nickName:]",
                     Trace::Audience::publicAPI),
               {.portName = portName,
                .portSettings = portSettings,
                .drawerGiven = true,
                .withDrawer = useDrawer,
                .MACAddr = MACAddr,
                .Threshold = Threshold,
                .nickName = nickName,
                .deviceType = QXDeviceTypeDesktopPrinter,
                .words = &printerWords});
}

void Manager::addSettingForTFTillfoxPortName(Text portName, Text portSettings, Text MACAddr,
                                             std::optional<double> Threshold, Text nickName) {
    addSetting(
        trace("-[QXNearcastManager addSettingForTFTillfoxPortName:portSettings:dongleMACAddr:RSSIthreshould:nickName:]",
              Trace::Audience::publicAPI),
        {.portName = portName,
         .portSettings = portSettings,
         .drawerGiven = false,
         .withDrawer = true,
         .MACAddr = MACAddr,
         .Threshold = Threshold,
         .nickName = nickName,
         .deviceType = QXDeviceTypeTFTillfox,
         .words = &drawerWords});
}

bool Manager::holdsPortName(std::string_view portName) {
    const NSLockGuard guard(_lockMutableSettingsFlag);
    return mutableSettings.contains(portName);
}

void Manager::refuse(const Trace& trace, const Registration& registration, const std::string& consoleText,
                     std::string_view reason) {
    console(consoleText);
    PortException exception("PortException", std::string(reason), std::string(registration.portName.value_or("")),
                            std::string(registration.MACAddr.value_or("")));
    trace.end("", [&] { return registration.arguments(); });
    throw exception;
}

// The checks and the insertion after them are not one step: two registrations that race for a name or an address can
// both pass, and the later one then replaces the earlier.
void Manager::check(const Trace& trace, const Registration& registration) {
    const Text& portName = registration.portName;
    const Text& MACAddr = registration.MACAddr;
    const Words& words = *registration.words;
    if (!portName || !MACAddr) {
        trace.error("(portName == nil) || (MACAddr == nil), ", Pointer{portName ? portName->data() : nullptr}, ", ",
                    Pointer{MACAddr ? MACAddr->data() : nullptr});
        refuse(trace, registration, std::string(words.missingConsole), words.missingReason);
    }
    if (holdsPortName(*portName)) {
        trace.error("[mutableSettings.allKeys containsObject:portName], ", Pointer{&mutableSettings}, ", ", *portName);
        refuse(trace, registration, "portName " + std::string(*portName) + " is already exists.",
               "The specified portName is already in use.");
    }
    if (!isValidateMACAddr(MACAddr)) {
        trace.error("[self isValidateMACAddr:MACAddr] == NO, ", Pointer{face_}, ", ", *MACAddr);
        refuse(trace, registration, "UUID is invalid.", "dongle MAC address is invalid.");
    }
    if (getPortNameFromMACAddr(MACAddr)) {
        trace.error("[self getPortNameFromMACAddr:MACAddr] != nil, ", Pointer{face_}, ", ", *MACAddr);
        refuse(trace, registration, "Given MAC address is already exist.", words.addressInUseReason);
    }
}

void Manager::addSetting(const Trace& trace, const Registration& registration) {
    const auto arguments = [&] { return registration.arguments(); };
    trace.start("", arguments);
    check(trace, registration);
    SettingRecord record = registration.record();
    if (registration.portSettings) {
        trace.process("portSettings != nil, ", *registration.portSettings);
        record.emplace(kQXPortSettings, std::string(*registration.portSettings));
    }
    if (registration.Threshold) {
        if (registration.drawerGiven) {
            trace.process("Threshold != nil, ", registration.thresholdRSSI());
        } else {
            trace.process("Threshold != nil, ", registration.portSettings);
        }
        record.emplace(kQXThreshouldRSSI, registration.thresholdRSSI());
    }
    {
        auto shared = std::make_shared<const SettingRecord>(std::move(record));
        const NSLockGuard guard(_lockMutableSettingsFlag);
        mutableSettings.insert(*registration.portName, std::move(shared));
    }
    trace.end("", arguments);
}

void Manager::removeSettingWithPortName(Text portName) {
    const Trace trace = this->trace("-[QXNearcastManager removeSettingWithPortName:]", Trace::Audience::publicAPI);
    trace.start("", portName);
    if (!portName) {
        trace.error("portName == nil, ", Pointer{nullptr});
        trace.end("", portName);
        return;
    }
    {
        const NSLockGuard guard(_lockMutableSettingsFlag);
        if (!mutableSettings.remove(*portName)) {
            trace.error("[mutableSettings.allKeys containsObject:portName] == NO, ", Pointer{&mutableSettings}, ", ",
                        *portName);
        }
    }
    trace.end("", portName);
}

}  // namespace nearcast
