// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/BluezAdapterService.h"

#include "doubles/FakeSystemBus.h"
#include "support/Mutex.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <deque>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace nearcast::bluez {

namespace {

using namespace std::chrono_literals;
using Told = std::vector<std::string>;

/// bluetoothd with an adapter hci0, on a thread of its own.
class ServedAdapter {
public:
    explicit ServedAdapter(FakeSystemBus& bus) : bus_(bus), thread_([this] { run(); }) {}
    ~ServedAdapter() {
        ending_ = true;
        wakeUp_.wake();
        thread_.join();
    }
    ServedAdapter(const ServedAdapter&) = delete;
    ServedAdapter& operator=(const ServedAdapter&) = delete;

    /// What `Powered` is, one look after the other, and the last one ever after. Nothing: the adapter is not there.
    void setPowered(std::deque<std::optional<bool>> looks) {
        const MutexLock lock(mutex_);
        powered_ = std::move(looks);
    }
    void setDiscovering(bool discovering) {
        const MutexLock lock(mutex_);
        discovering_ = discovering;
    }
    /// The properties that were asked for or set, in order.
    Told told() {
        const MutexLock lock(mutex_);
        return told_;
    }

private:
    void run() {
        while (!ending_) {
            while (bus_.serve()) {
            }
            while (const MessagePointer call = bus_.takeCall()) answer(call);
            bus_.await(wakeUp_);
        }
    }
    void answer(const MessagePointer& call) {
        const MutexLock lock(mutex_);
        if (sd_bus_message_get_auto_start(call.get()) != 0) told_.emplace_back("bluetoothd is started");
        const char* interface = "";
        const char* property = "";
        sd_bus_message_read(call.get(), "ss", &interface, &property);
        const std::string path = sd_bus_message_get_path(call.get());
        const std::string name = property;
        if (path != "/org/bluez/hci0" || std::string(interface) != "org.bluez.Adapter1") return unknown(call);
        if (sd_bus_message_is_method_call(call.get(), interface::properties, "Set") > 0) {
            int value = -1;
            sd_bus_message_read(call.get(), "v", "b", &value);
            told_.push_back(name + "=" + std::to_string(value));
            return FakeSystemBus::answer(call, "");
        }
        told_.push_back(name);
        if (name == "Discovering") return FakeSystemBus::answer(call, "v", "b", int{discovering_});
        const std::optional<bool> powered = powered_.front();
        if (powered_.size() > 1) powered_.pop_front();
        if (!powered) return unknown(call);
        FakeSystemBus::answer(call, "v", "b", int{*powered});
    }
    static void unknown(const MessagePointer& call) {
        FakeSystemBus::answerError(call, "org.freedesktop.DBus.Error.UnknownObject", "there is no such object");
    }

    FakeSystemBus& bus_;
    Mutex mutex_;
    std::deque<std::optional<bool>> powered_ NEARCAST_GUARDED_BY(mutex_){false};
    bool discovering_ NEARCAST_GUARDED_BY(mutex_) = false;
    Told told_ NEARCAST_GUARDED_BY(mutex_);
    WakeUp wakeUp_;
    std::atomic<bool> ending_{false};
    std::thread thread_;
};

class BluezAdapterServiceTest : public testing::Test {
protected:
    BluezAdapterServiceTest() { system.setOwner(FakeSystemBus::bluetoothd); }

    BluezAdapterService service(const std::string& configuration = "") {
        return {folder_.write("main.conf", configuration), {.pause = [this](std::chrono::milliseconds) { ++pauses; }}};
    }

    FakeSystemBus system;
    ServedAdapter adapter{system};
    int pauses = 0;

private:
    const TemporaryFolder folder_;
};

TEST_F(BluezAdapterServiceTest, TurnsOnWhatItHasOff) {
    EXPECT_TRUE(service().turnsOn("hci0"));
    EXPECT_FALSE(service().turnsOn("hci1")) << "it does not know it";
    adapter.setPowered({true});
    EXPECT_FALSE(service().turnsOn("hci0"));
}

TEST_F(BluezAdapterServiceTest, TurnsNothingOnWhereItIsNotSetTo) {
    EXPECT_FALSE(service("[Policy]\nAutoEnable=false\n").turnsOn("hci0"));
    EXPECT_TRUE(adapter.told().empty());
}

TEST_F(BluezAdapterServiceTest, TurnsOnWhereItHasNoConfiguration) {
    EXPECT_TRUE(BluezAdapterService("/nowhere/main.conf", {.pause = {}}).turnsOn("hci0"));
}

TEST_F(BluezAdapterServiceTest, TurnsOffWhatNobodyUses) {
    EXPECT_TRUE(service().turnOff("hci0"));
    EXPECT_EQ(adapter.told(), (Told{"Discovering", "Powered=0"}));
}

TEST_F(BluezAdapterServiceTest, DoesNotTurnOffWhatSomebodyDiscoversBy) {
    adapter.setDiscovering(true);
    EXPECT_FALSE(service().turnOff("hci0"));
    EXPECT_EQ(adapter.told(), Told{"Discovering"});
}

TEST_F(BluezAdapterServiceTest, CannotTurnOffWhatItDoesNotKnow) { EXPECT_FALSE(service().turnOff("hci1")); }

TEST_F(BluezAdapterServiceTest, LeavesOffWhatItHasTurnedOnByThen) {
    adapter.setPowered({std::nullopt, std::nullopt, false, true});
    service().leaveOff("hci0");
    EXPECT_EQ(adapter.told(), (Told{"Powered", "Powered", "Powered", "Powered", "Discovering", "Powered=0"}));
    EXPECT_EQ(pauses, 3);
}

TEST_F(BluezAdapterServiceTest, DoesNotWaitForeverForWhatDoesNotComeBack) {
    adapter.setPowered({std::nullopt});
    service().leaveOff("hci0");
    EXPECT_EQ(pauses, BluezAdapterService::Patience().looksForIt);
    EXPECT_EQ(adapter.told().back(), "Powered");
}

TEST_F(BluezAdapterServiceTest, DoesNotWaitForeverForWhatStaysOff) {
    service().leaveOff("hci0");
    EXPECT_EQ(pauses, BluezAdapterService::Patience().looksForPower);
    EXPECT_EQ(adapter.told().back(), "Powered");
}

TEST(BluezAdapterService, DoesNothingWithoutABus) {
    const FakeSystemBus system;  // which puts the address back at its end
    setenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
    int pauses = 0;
    BluezAdapterService service("", {.pause = [&](std::chrono::milliseconds) { ++pauses; }});
    EXPECT_FALSE(service.turnsOn("hci0"));
    EXPECT_FALSE(service.turnOff("hci0"));
    service.leaveOff("hci0");
    EXPECT_EQ(pauses, 0);
}

struct Configuration {
    const char* text;
    bool enable;
};

TEST(AutoEnable, IsReadAsBluetoothdReadsIt) {
    const Configuration cases[] = {
        {"", true},
        {"[General]\nName=till\n", true},
        {"[Policy]\n#AutoEnable=false\n", true},
        {"[Policy]\nAutoEnable=true\n", true},
        {"[Policy]\nAutoEnable=false\n", false},
        {"[Policy]\n  AutoEnable = false \r\n", false},
        {"[Policy]\nAutoEnable=0", false},
        {"[Policy]\nReconnectAttempts=7\nAutoEnable=false\n[GATT]\n", false},
        {"[General]\nAutoEnable=false\n", true},
        {"[Policy]\n[General]\nAutoEnable=false\n", true},
        {"[Policy]\nAutoEnableAll=false\nAutoEnable\n", true},
    };
    for (const Configuration& one : cases) {
        EXPECT_EQ(isAutoEnable(one.text), one.enable) << one.text;
    }
}

}  // namespace

}  // namespace nearcast::bluez
