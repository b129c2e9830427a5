// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/LogWriter.h>
#include <nearcast/QXNearcastManager.h>

#include "platform/CBCentralManager.h"
#include "platform/NSDate.h"
#include "platform/NSLock.h"
#include "platform/NSTimer.h"
#include "platform/Platform.h"
#include "proximity/Smoothing.h"
#include "settings/Registry.h"
#include "support/AddressTable.h"
#include "support/AtomicShared.h"
#include "support/Trace.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

class ActionAreaSamples;
class DongleAddress;

/// The lowest value, in dBm (Core Specification, Volume 4, Part E, 7.7.65.2).
inline constexpr std::int32_t kQXMinRSSI = -127;
/// No reading is available; also the answer of operations that have none to give.
inline constexpr std::int32_t kQXInvalidRSSI = 127;

/// The manager behind its public face: its state, its four locks, and every operation, public and internal.
///
/// Where each operation lies, below `src`. The private steps of an operation stand beside it.
///
///     init                                 core/Manager.cpp
///     delegate                             core/Manager.h
///     setDelegate                          core/Manager.h
///     samplingNumber                       core/Manager.h
///     isLECapableHardware                  core/Manager.cpp
///     centralManagerDidUpdateState         core/Manager.cpp
///     addSettingForPrinterPortName         settings/Registration.cpp
///     addSettingForTFTillfoxPortName       settings/Registration.cpp
///     removeSettingWithPortName            settings/Registration.cpp
///     getSettings                          settings/Persistence.cpp
///     setSettings                          settings/Persistence.cpp
///     serializedSettings                   settings/Persistence.cpp
///     deserializeSettings                  settings/Persistence.cpp
///     isValidateMACAddr                    settings/AddressHelpers.cpp
///     getPortNameFromMACAddr               settings/AddressHelpers.cpp
///     getMACAddressFromName                settings/AddressHelpers.cpp
///     startScan                            proximity/ScanControl.cpp
///     stopScan                             proximity/ScanControl.cpp
///     restartScan                          proximity/ScanControl.cpp
///     centralManagerDidDiscoverPeripheral  proximity/Advertisement.cpp
///     eventRepeatTimer                     proximity/PresenceSweep.cpp
///     calibrateActionArea                  proximity/Calibration.cpp
///     getRSSI                              proximity/Calibration.cpp
///     acceptsAddress                       settings/AddressHelpers.cpp
///     snapshot                             settings/Persistence.cpp
///
/// docs/threading.md tells which thread runs each and which locks it takes; the only nesting is `_lockRssiDataFlag`
/// before `_lockMutableSettingsFlag`.
class Manager : public CBCentralManagerDelegate {
public:
    using Text = QXNearcastManager::Text;

    /// A manager without a radio.
    /// @param face     the object that trace records name
    /// @param platform lives longer than the manager
    Manager(const void* face, PlatformServices& platform);
    ~Manager() override;
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    // core
    void init();
    [[nodiscard]] std::shared_ptr<QXNearcastManagerDelegate> delegate() const { return _delegate.load(); }
    void setDelegate(std::shared_ptr<QXNearcastManagerDelegate> delegate) { _delegate.store(std::move(delegate)); }
    [[nodiscard]] std::uint64_t samplingNumber() const noexcept { return _samplingNumber.load(); }
    bool isLECapableHardware();
    void centralManagerDidUpdateState(CBCentralManager& central) override;

    // settings
    void addSettingForPrinterPortName(Text portName, Text portSettings, bool useDrawer, Text MACAddr,
                                      std::optional<double> Threshold, Text nickName);
    void addSettingForTFTillfoxPortName(Text portName, Text portSettings, Text MACAddr, std::optional<double> Threshold,
                                        Text nickName);
    void removeSettingWithPortName(Text portName);
    std::shared_ptr<const Settings> getSettings();
    void setSettings(std::optional<Settings> settings);
    std::optional<std::string> serializedSettings();
    bool deserializeSettings(std::optional<std::string_view> data);
    bool isValidateMACAddr(Text MACAddr);
    std::optional<std::string> getPortNameFromMACAddr(Text MACAddr);
    std::string getMACAddressFromName(Text NameString);

    // proximity
    bool startScan();
    bool startScan(std::uint64_t samplingNumber);
    void stopScan();
    void restartScan(NSTimer& tm);
    void centralManagerDidDiscoverPeripheral(CBCentralManager& central, const CBPeripheral& peripheral,
                                             const AdvertisementData& advertisementData, std::int32_t RSSI) override;
    void eventRepeatTimer();
    std::int32_t calibrateActionArea(Text MACAddr);
    std::int32_t getRSSI(Text MACAddr);

protected:
    /// The answer of `isValidateMACAddr`: every address, the absent one included. A seam for tests.
    virtual bool acceptsAddress(Text MACAddr) const;
    /// The snapshot that `getSettings` gives. A seam for tests: there is always one.
    virtual std::shared_ptr<const Settings> snapshot() NEARCAST_REQUIRES(_lockMutableSettingsFlag);

private:
    struct Registration;
    /// What is known of one dongle that is in range.
    struct Signal {
        NSDate lastUpdate;
        Smoothing smoothing;
    };

    [[nodiscard]] Trace trace(std::string_view method, Trace::Audience audience) const {
        return Trace(face_, method, audience);
    }
    void console(std::string_view line) { platform_.NSLog(line); }

    void openRadio();
    void failToOpen(std::string_view why);
    /// @throws std::system_error (`resource_deadlock_would_occur`) where the thread may not sleep
    void checkSleep() const;

    void addSetting(const Trace& trace, const Registration& registration);
    void check(const Trace& trace, const Registration& registration);
    [[noreturn]] void refuse(const Trace& trace, const Registration& registration, const std::string& consoleText,
                             std::string_view reason);
    bool holdsPortName(std::string_view portName);
    /// @param MACAddr null: absent
    FoundPort findPort(const AddressKey* MACAddr);
    std::int32_t deviceTypeOf(const FoundPort& found);

    bool startScanning(const Trace& trace);
    bool armCalibration(const Trace& trace, Text MACAddr, const std::shared_ptr<ActionAreaSamples>& samples);
    void awaitSamples();

    void discover(const Trace& trace, const CBPeripheral& peripheral, const AdvertisementData& advertisementData,
                  std::int32_t RSSI);
    bool readAddress(const Trace& trace, const CBPeripheral& peripheral, std::span<const std::uint8_t> payload,
                     DongleAddress& address);
    // Without the locks: it reads nothing of the tables.
    void prefetchTables(const AddressKey& address) const NEARCAST_NO_THREAD_SAFETY_ANALYSIS;
    bool sampleForCalibration(const Trace& trace, std::string_view address, std::int32_t RSSI);
    std::optional<std::int32_t> smooth(const Trace& trace, const AddressKey& address, std::int32_t RSSI);
    void report(const Trace& trace, const AddressKey& address, std::int32_t output);
    bool isStale(const Signal& signal) const;
    bool tellSilence(const AddressKey& address) NEARCAST_REQUIRES(_lockRssiDataFlag);
    [[nodiscard]] bool sweepIsIdle() const;
    [[nodiscard]] static bool restartIsIdle() { return !LogWriter::isLogging(); }

    const void* face_;
    PlatformServices& platform_;

    // Destroyed in the reverse of this order: the radio first, so that nothing calls any more.
    AtomicShared<QXNearcastManagerDelegate> _delegate;
    NSLock _lockMutableSettingsFlag{"_lockMutableSettingsFlag"};
    NSLock _lockRssiDataFlag NEARCAST_ACQUIRED_BEFORE(_lockMutableSettingsFlag){"_lockRssiDataFlag"};
    NSLock _lockCalibrateActionAreaFlag{"_lockCalibrateActionAreaFlag"};
    NSLock _lockStartScanFlag{"_lockStartScanFlag"};

    std::atomic<std::uint64_t> _samplingNumber{0};
    bool scanStart NEARCAST_GUARDED_BY(_lockStartScanFlag) = false;
    std::shared_ptr<NSTimer> p_restartScanTimer NEARCAST_GUARDED_BY(_lockStartScanFlag);
    std::shared_ptr<NSTimer> repeatTimer NEARCAST_GUARDED_BY(_lockStartScanFlag);

    // A calibration arms these under `_lockStartScanFlag`; the handler reads them under `_lockCalibrateActionAreaFlag`.
    std::atomic<bool> toCalibrateActionArea{false};
    std::atomic<bool> isEnoughDataForActionArea{false};
    AtomicShared<const std::string> macAddrForActionArea;
    AtomicShared<ActionAreaSamples> rssiDataForActionArea;

    AddressTable<Signal> rssiData NEARCAST_GUARDED_BY(_lockRssiDataFlag);
    /// Whether `rssiData` is empty, to be read without its lock; written with it.
    std::atomic<bool> nobodyInRange_{true};
    Registry mutableSettings NEARCAST_GUARDED_BY(_lockMutableSettingsFlag);

    std::atomic<bool> initialised_{false};
    std::atomic<CBCentralManager*> manager{nullptr};
    std::unique_ptr<CBCentralManager> ownedManager_;
};

}  // namespace nearcast
