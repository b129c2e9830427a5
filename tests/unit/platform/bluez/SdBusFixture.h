// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/FakeSystemBus.h"
#include "doubles/KeptLines.h"
#include "platform/bluez/SdBus.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::bluez {

using Lines = std::vector<std::string>;

/// Writes down what it is told, a line each.
class WrittenDown : public SystemBusListener {
public:
    void busLost(const Failure& failure) override { tell("lost: " + failure.name + ": " + failure.message); }
    void daemonChanged(bool there) override { tell(there ? "bluetoothd is there" : "bluetoothd is not there"); }
    void adapterAdded(std::string_view path, const AdapterNews& news) override { tell("added", path, of(news)); }
    void adapterChanged(std::string_view path, const AdapterNews& news) override { tell("changed", path, of(news)); }
    void adapterRemoved(std::string_view path) override { tell("adapter removed", path, ""); }
    void monitorsOffered(std::string_view adapter) override { tell("monitors", adapter, ""); }
    void deviceListed(std::string_view path, const DeviceNews& news) override { tell("listed", path, of(news)); }
    void deviceAdded(std::string_view path, const DeviceNews& news) override { tell("added", path, of(news)); }
    void deviceChanged(std::string_view path, const DeviceNews& news) override { tell("changed", path, of(news)); }
    void deviceRemoved(std::string_view path) override { tell("device removed", path, ""); }
    void monitorReleased() override { tell("monitor released"); }
    void forged() override { tell("forged"); }

    void tell(std::string line) {
        lines_.push_back(std::move(line));
        if (onLine) onLine();
    }
    /// What was told since it was last asked.
    Lines take() { return std::exchange(lines_, {}); }

    std::function<void()> onLine;

private:
    void tell(std::string what, std::string_view path, const std::string& news) {
        tell(what.append(" ").append(path).append(news));
    }
    static std::string of(const AdapterNews& news) {
        if (!news.powered) return "";
        return *news.powered ? " on" : " off";
    }
    static std::string of(const DeviceNews& news) {
        std::string text;
        if (news.RSSI) text += " " + std::to_string(*news.RSSI);
        if (news.name) text.append(" ").append(*news.name);
        return news.noMoreRSSI ? text + " no reading" : text;
    }

    Lines lines_;
};

/// A client on a bus, both driven by the test.
class SdBusTest : public testing::Test {
protected:
    /// Connects, to a bus where bluetoothd runs unless the test has said otherwise.
    void connect() {
        ASSERT_FALSE(bus.connect(listener).has_value());
        settle();
    }
    void connectToBluetoothd() {
        system.setOwner(FakeSystemBus::bluetoothd);
        connect();
        ASSERT_EQ(listener.take(), Lines{"bluetoothd is there"});
    }
    /// Until neither side has anything more to do.
    void settle() {
        for (int idle = 0; idle < 2; ++idle) {
            const bool served = system.serve();
            if (bus.process(true).messages > 0 || served) idle = -1;
        }
    }
    /// How a call ended, among what the listener is told.
    Done noted(const std::string& what) {
        return [this, what](const std::optional<Failure>& failure) {
            listener.tell(what + (failure ? ": " + failure->name + ": " + failure->message : " done"));
        };
    }
    /// What was told since this was last asked.
    Lines told() { return listener.take(); }

    /// A report of a device, as bluetoothd signals it.
    void report(int RSSI) {
        system.signal(FakeSystemBus::bluetoothd, device, interface::properties, "PropertiesChanged", "sa{sv}as",
                      interface::device, 1, "RSSI", "n", RSSI, 0);
    }

    static constexpr const char* adapter = "/org/bluez/hci0";
    static constexpr const char* device = "/org/bluez/hci0/dev_02_00_00_00_00_01";
    static constexpr const char* stranger = ":1.66";  ///< some other program

    FakeSystemBus system;
    KeptLines console;
    WrittenDown listener;
    SdBus bus{console};
};

}  // namespace nearcast::bluez
