// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>
#include <nearcast/PortException.h>
#include <nearcast/QXBluetoothManager.h>
#include <nearcast/SettingRecord.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

/// What an application hears from the manager. Both operations are optional: an empty one is an operation that
/// the delegate does not implement.
///
/// The texts are valid during the call only. What an operation throws releases the manager's locks, is reported
/// on the console, and ends nothing.
struct QXNearcastManagerDelegate {
    /// A dongle was heard and its smoothed signal is known. Called on the radio's thread, with no lock held: any
    /// operation of the manager may be called from inside.
    ///
    /// @param portName   the registered port, or "" for a dongle that is not registered
    /// @param deviceType the record's type; `QXDeviceTypeUnknown` for a dongle that is not registered
    /// @param MACAddr    the dongle's address
    /// @param RSSI       the smoothed signal in dBm
    std::function<void(std::string_view portName, QXDeviceType deviceType, std::string_view MACAddr, std::int32_t RSSI)>
        didDiscoverPort;

    /// A dongle has been silent for 5 seconds and is forgotten until it is heard again. Without this operation no
    /// dongle is ever forgotten. Called on the timers' thread while the table of signals is locked: calling
    /// `getRSSI` from inside throws `std::system_error`, everything that does not touch that table is allowed.
    ///
    /// @param portName the registered port, or "" for a dongle that is not registered
    /// @param MACAddr  the dongle's address
    std::function<void(std::string_view portName, std::string_view MACAddr)> didUpdateState;
};

/// The proximity manager: it knows the registered devices, listens to their dongles while a scan runs, and tells
/// its delegate how strongly each is heard and which have fallen silent.
///
/// There is one in a process, for the life of the process. Choose the platform (`Platform::choose`) before the
/// first `sharedManager`. Every operation may be called from any thread.
///
/// @code
/// auto& manager = nearcast::QXNearcastManager::sharedManager();
/// manager.addSettingForPrinterPortName("BT:Front", {}, false, "00:11:22:AA:BB:CC", -65, "Front");
/// manager.setDelegate(std::make_shared<nearcast::QXNearcastManagerDelegate>(...));
/// manager.startScan();
/// @endcode
class NEARCAST_EXPORT QXNearcastManager {
public:
    using Text = std::optional<std::string_view>;  ///< a text that may be absent

    QXNearcastManager(const QXNearcastManager&) = delete;
    QXNearcastManager& operator=(const QXNearcastManager&) = delete;

    /// The manager, made on the first call with the platform chosen.
    ///
    /// Where the radio cannot be opened, that call throws, and the console and `Platform::radioHealth` say why. The
    /// manager is there all the same, without a radio, and later calls give it: it answers every operation as one that
    /// was never initialised, until `init` has succeeded.
    ///
    /// A synchronous trace sink may ask for the manager while its own thread makes it: it gets the object, which is not
    /// initialised yet.
    /// @throws what the platform throws when its radio cannot be opened
    /// @throws std::logic_error in such a sink, before there is an object
    /// @throws std::system_error (`resource_deadlock_would_occur`) in a synchronous sink while another thread makes the
    ///         manager
    static QXNearcastManager& sharedManager();

    /// @name Storage and references
    /// The manager can be neither copied nor doubled nor destroyed; these operations keep their fixed answers.
    /// @{

    /// The storage of the one manager the first time, null at every later call. A manager that was allocated and
    /// never initialised answers every operation as an empty manager without a radio.
    static QXNearcastManager* allocWithZone(void* zone);
    /// Opens the radio and makes the manager ready. On a manager that is ready it changes nothing.
    QXNearcastManager* init();
    QXNearcastManager* copyWithZone(void* zone);  ///< itself
    QXNearcastManager* retain();                  ///< itself
    std::uint64_t retainCount();                  ///< 4294967295, always
    void release();                               ///< nothing
    QXNearcastManager* autorelease();             ///< itself
    /// @}

    /// The delegate, or null.
    [[nodiscard]] std::shared_ptr<QXNearcastManagerDelegate> delegate() const;
    /// Sets the delegate, which the manager keeps alive until another, or none, is set. A call that is under way on
    /// another thread may still reach the previous one.
    void setDelegate(std::shared_ptr<QXNearcastManagerDelegate> delegate);

    /// Samples in each smoothing window; 7 until `startScan(samplingNumber)` sets it.
    [[nodiscard]] std::uint64_t samplingNumber() const noexcept;

    /// @name The registry
    /// @{

    /// Registers a printer.
    /// @param portName     the name by which the printing layer opens the device
    /// @param portSettings what the printing layer passes on opening; may be absent
    /// @param useDrawer    a cash drawer is attached
    /// @param MACAddr      the address of the dongle beside it: six upper-case hexadecimal octets joined by colons. It
    ///                     is stored as given and compared letter by letter
    /// @param Threshold    signal of the action area in dBm; cut toward zero, clamped to 32 bits; may be absent
    /// @param nickName     a name for people; may be absent
    /// @throws PortException when the port name or the address is absent or already in use
    void addSettingForPrinterPortName(Text portName, Text portSettings, bool useDrawer, Text MACAddr,
                                      std::optional<double> Threshold, Text nickName);
    /// Registers a TF-Tillfox cash drawer; the parameters are those of `addSettingForPrinterPortName`.
    /// @throws PortException when the port name or the address is absent or already in use
    void addSettingForTFTillfoxPortName(Text portName, Text portSettings, Text MACAddr, std::optional<double> Threshold,
                                        Text nickName);
    /// Forgets a device. An absent or unknown name changes nothing.
    void removeSettingWithPortName(Text portName);

    /// A snapshot of the registry, sharing its records. Never null in practice; null means that there is none.
    [[nodiscard]] std::shared_ptr<const Settings> getSettings();
    /// Replaces the whole registry; nothing empties it. Nothing is checked.
    void setSettings(std::optional<Settings> settings);

    /// The registry as indented JSON in UTF-8, or nothing when it holds what JSON cannot express.
    [[nodiscard]] std::optional<std::string> serializedSettings();
    /// Replaces the registry by a saved one.
    /// @param data what `serializedSettings` gave
    /// @return false when it is not JSON; the registry is then unchanged
    /// @throws std::invalid_argument when it is JSON of another shape; the registry is then unchanged
    bool deserializeSettings(std::optional<std::string_view> data);
    /// @}

    /// @name Scanning
    /// @{

    /// Starts listening. Blocks for up to a second while the radio does not know its state.
    /// @return false when the radio cannot be used, or a scan or a calibration runs already
    bool startScan();
    /// Sets the size of the smoothing windows, then starts listening. The size stays even when the start is refused.
    /// @return false when `samplingNumber` is 0, and as `startScan()`
    bool startScan(std::uint64_t samplingNumber);
    /// Stops listening and ends a calibration's sampling. What was heard stays known.
    void stopScan();
    /// Measures how strongly a dongle is heard where the user stands. Blocks for up to seven seconds.
    /// @return the second strongest of samples 5 to 15 in dBm; 127 when there were too few, or when a scan or a
    ///         calibration runs already
    std::int32_t calibrateActionArea(Text MACAddr);
    /// The newest smoothed signal of a dongle in dBm; 127 when it is not known, 0 when it was heard too rarely yet.
    std::int32_t getRSSI(Text MACAddr);
    /// @}

private:
    friend class Manager;
    QXNearcastManager();
    ~QXNearcastManager();

    std::unique_ptr<class Manager> manager_;
};

}  // namespace nearcast
