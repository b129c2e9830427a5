// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/Adapters.h"
#include "platform/bluez/DeviceTable.h"
#include "platform/bluez/Discovery.h"
#include "platform/bluez/KernelScan.h"
#include "platform/bluez/SystemBus.h"
#include "platform/radio/BackOff.h"
#include "platform/radio/Radio.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast::bluez {

/// Keeps a scan through BlueZ running, through loss and return of the bus, of bluetoothd and of the adapter. Everything
/// that this radio decides is decided here and in `Discovery`.
///
/// It has no clock and no thread: `pass` brings the time, `due` says when it next needs it. Not for several threads at
/// once.
class BluezSession : private SystemBusListener {
public:
    /// For how long an adapter that has just come counts as coming up while it is off.
    static constexpr Time settling = std::chrono::seconds(3);
    /// How often the kernel's switches are read while the adapter is off.
    static constexpr Time switchInterval = std::chrono::seconds(2);
    static constexpr Time firstPause = std::chrono::milliseconds(250);
    static constexpr Time longestPause = std::chrono::seconds(2);

    /// @param bus, rfkill, mgmt, listener live longer
    /// @param adapter "hci1" or an address; empty: the best one
    BluezSession(SystemBus& bus, const Rfkill& rfkill, MgmtPort& mgmt, SessionListener& listener, std::string adapter);
    ~BluezSession() override { bus_.disconnect(); }
    BluezSession(const BluezSession&) = delete;
    BluezSession& operator=(const BluezSession&) = delete;

    /// Whether a scan is wanted, from the time of the last `pass` on.
    void want(bool scan) { discovery_.want(scan); }
    /// Sets the time of what happens next and does nothing that is due; the time never goes back.
    void setTime(Time now) noexcept {
        now_ = now;
        discovery_.setTime(now);
    }
    /// Does everything that is due; the time never goes back. The first call connects.
    void pass(Time now);
    /// When `pass` is needed, at the latest.
    [[nodiscard]] std::optional<Time> due() const;

    [[nodiscard]] CBManagerState state() const noexcept { return told_.state; }
    [[nodiscard]] const std::string& why() const noexcept { return told_.why; }
    /// The condition before the first `pass`.
    static RadioCondition beginning() { return {CBManagerStateUnknown, "bluetoothd has not answered yet"}; }

private:
    enum class Daemon { unknown, absent, present };

    void busLost(const Failure& failure) override;
    void daemonChanged(bool there) override;
    void adapterAdded(std::string_view path, const AdapterNews& news) override;
    void adapterChanged(std::string_view path, const AdapterNews& news) override;
    void adapterRemoved(std::string_view path) override;
    void monitorsOffered(std::string_view adapter) override;
    void deviceListed(std::string_view path, const DeviceNews& news) override;
    void deviceAdded(std::string_view path, const DeviceNews& news) override;
    void deviceChanged(std::string_view path, const DeviceNews& news) override;
    void deviceRemoved(std::string_view path) override;
    void monitorReleased() override;
    void forged() override { listener_.forged(); }

    void connect();
    void list();
    void listed(const std::optional<Failure>& failure);
    void askFor(std::string_view device);
    void forgetDaemon();
    void update();
    void lookAtSwitches();
    void tell();
    [[nodiscard]] RadioCondition condition() const;
    [[nodiscard]] RadioCondition conditionWithoutAdapters() const;
    [[nodiscard]] RadioCondition conditionWithoutOurs() const;
    [[nodiscard]] RadioCondition conditionOf(const Adapter& adapter) const;
    [[nodiscard]] RadioCondition conditionOfScan() const;

    SystemBus& bus_;
    const Rfkill& rfkill_;
    SessionListener& listener_;
    Time now_{0};

    bool connected_ = false;
    std::optional<Failure> busFailure_;
    std::optional<Time> connectAt_{Time(0)};
    BackOff connectPause_{firstPause, longestPause};

    Daemon daemon_ = Daemon::unknown;
    bool wasAbsent_ = false;  ///< bluetoothd was seen to be gone, so its adapters may still be coming up
    bool listed_ = false;
    std::uint64_t epoch_ = 0;  ///< raised with each bluetoothd: answers of a former one are ignored
    std::optional<Failure> listFailure_;
    std::optional<Time> listAt_;
    BackOff listPause_{firstPause, longestPause};

    Adapters adapters_;
    std::optional<Time> settledAt_;  ///< when an adapter that has just come counts as what it says
    Block block_ = Block::none;
    std::optional<Time> switchesAt_;

    DeviceTable devices_;
    bool asking_ = false;
    Time askAfter_{0};

    KernelScan kernel_;
    Discovery discovery_;
    RadioCondition told_ = beginning();
};

}  // namespace nearcast::bluez
