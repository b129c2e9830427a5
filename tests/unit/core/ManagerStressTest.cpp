// SPDX-License-Identifier: Apache-2.0
#include <nearcast/LogWriter.h>

#include "core/Manager.h"
#include "doubles/KeptLines.h"
#include "doubles/ThreadedPlatform.h"
#include "platform/json/JSONSerialization.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <barrier>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace nearcast {
namespace {

constexpr int callers = 8;
constexpr int callsEach = 1000;
constexpr int callsAtMost = 1'000'000;  ///< each, before something has been heard
constexpr int broadcasters = 2;
constexpr std::chrono::milliseconds perAdvertisement{20};  ///< how the time passes
constexpr std::array addresses{"00:11:22:AA:BB:00", "00:11:22:AA:BB:01", "00:11:22:AA:BB:02", "00:11:22:AA:BB:03"};
constexpr std::array portNames{"P0", "P1", "P2", "P3"};
constexpr std::int32_t weakest = -100;
constexpr std::int32_t strongest = -31;

bool isSignal(std::int32_t RSSI) { return RSSI >= weakest && RSSI <= strongest; }

/// Every public operation from eight threads, while advertisements come from two and the timers fire on a third. A
/// port and its address keep their number, so that what comes out can be told from what never was.
class ManagerStress : public testing::Test {
protected:
    ManagerStress() {
        manager_.init();
        for (int kind = 0; kind < 3; ++kind) delegates_[static_cast<std::size_t>(kind)] = makeDelegate(kind);
    }
    ~ManagerStress() override { platform_.reset(); }
    ManagerStress(const ManagerStress&) = delete;
    ManagerStress& operator=(const ManagerStress&) = delete;

    void check(bool holds) {
        if (!holds) ++broken_;
    }
    void checkPair(std::string_view portName, std::string_view address) {
        check(address.size() == 17 && (portName.empty() || (portName[0] == 'P' && portName[1] == address.back())));
    }

    /// 0: implements both operations, 1: the second alone, 2: none.
    std::shared_ptr<QXNearcastManagerDelegate> makeDelegate(int kind) {
        auto delegate = std::make_shared<QXNearcastManagerDelegate>();
        if (kind == 0) {
            delegate->didDiscoverPort = [this](std::string_view portName, QXDeviceType type, std::string_view address,
                                               std::int32_t RSSI) {
                ++discoveries_;
                checkPair(portName, address);
                check(isSignal(RSSI));
                check(type == (portName.empty() ? 0 : portName[1] < '2' ? 1 : 3) || type == 0);
                if (discoveries_ % 50 == 0) checkSignal(manager_.getRSSI(address));
            };
        }
        if (kind <= 1) {
            delegate->didUpdateState = [this](std::string_view portName, std::string_view address) {
                ++silences_;
                checkPair(portName, address);
            };
        }
        return delegate;
    }

    void checkSignal(std::int32_t RSSI) { check(RSSI == 127 || RSSI == 0 || isSignal(RSSI)); }

    void checkRegistry(const Settings& settings) {
        for (const auto& [portName, record] : settings) {
            const auto address = record->find(kQXDongleMACAddr);
            check(address != record->end());
            checkPair(portName, *address->second.as<std::string>());
        }
    }

    void add(std::size_t which) {
        try {
            if (which < 2) {
                manager_.addSettingForPrinterPortName(portNames[which], "s", true, addresses[which], -60.5, "n");
            } else {
                manager_.addSettingForTFTillfoxPortName(portNames[which], {}, addresses[which], {}, {});
            }
        } catch (const PortException&) {  // another thread was first
        }
    }

    void callRegistry(int kind, std::size_t which) {
        switch (kind) {
            case 0: return add(which);
            case 1: return manager_.removeSettingWithPortName(portNames[which]);
            case 2: return checkRegistry(*manager_.getSettings());
            case 3: return manager_.setSettings(*manager_.getSettings());
            case 4: return check(manager_.deserializeSettings(manager_.serializedSettings()));
            default: return check(!manager_.deserializeSettings("garbage"));
        }
    }

    void calibrate(std::size_t which) {
        if (which != 0) return manager_.stopScan();  // it takes long, and nothing is reported meanwhile
        const std::int32_t RSSI = manager_.calibrateActionArea(addresses[which]);
        check(RSSI == 127 || isSignal(RSSI));
    }

    void swapDelegates(std::size_t which) {
        manager_.setDelegate(nullptr);
        manager_.setDelegate(delegates_[which % delegates_.size()]);
        manager_.setDelegate(delegates_[0]);
    }

    void call(int kind, std::size_t which) {
        if (kind >= 8) return callRegistry(kind - 8, which);
        switch (kind) {
            case 0: manager_.startScan(); break;
            case 1: manager_.startScan(1 + which); break;
            case 2: manager_.startScan(1); break;
            case 3: calibrate(which); break;
            case 4: checkSignal(manager_.getRSSI(addresses[which])); break;
            case 5: swapDelegates(which); break;
            case 6: static_cast<void>(manager_.delegate()); break;
            default: check(manager_.samplingNumber() >= 1); break;
        }
    }

    bool heardEnough() { return discoveries_ >= 200 && silences_ >= 10; }

    void callEverything(int thread) {
        constexpr int kinds = 14;
        for (int count = 0; count < callsEach || (count < callsAtMost && !heardEnough()); ++count) {
            call((count * 5 + thread) % kinds, static_cast<std::size_t>((count / kinds + thread) % 4));
        }
    }

    void advertise(int thread) {
        for (int count = 0; calling_ > 0; ++count) {
            AdvertisingReport report;
            report.manufacturerData = {0xFF, 0xFF, 0x00, 0x11, 0x22, 0xAA, 0xBB, static_cast<std::uint8_t>(count % 4)};
            report.RSSI = weakest + (count * 7 + thread) % (strongest - weakest + 1);
            report.services.push_back(CBUUID::UUIDWithString("4F37D906-3F43-440C-98E0-9E709971CADF"));
            platform_->radio().advertise(report);
            if (count % 500 == 250) platform_->radio().setState(count % 1000 == 250 ? 4 : 0);
            if (count % 500 == 260) platform_->radio().setState(5);
            platform_->give(perAdvertisement);
        }
    }

    void runAll() {
        std::barrier start(callers + broadcasters);
        std::vector<std::thread> threads;
        for (int thread = 0; thread < callers + broadcasters; ++thread) {
            threads.emplace_back([&, thread] {
                start.arrive_and_wait();
                if (thread >= callers) return advertise(thread);
                callEverything(thread);
                --calling_;
            });
        }
        for (std::thread& thread : threads) thread.join();
    }

    KeptLines console_;
    JSONSerialization JSON_;
    std::unique_ptr<doubles::ThreadedPlatform> platform_ = std::make_unique<doubles::ThreadedPlatform>(console_, JSON_);
    Manager manager_{this, *platform_};
    std::array<std::shared_ptr<QXNearcastManagerDelegate>, 3> delegates_;
    std::atomic<int> calling_{callers};
    std::atomic<int> broken_{0};
    std::atomic<int> discoveries_{0};
    std::atomic<int> silences_{0};
};

TEST_F(ManagerStress, EightThreadsCallEverythingWhileAdvertisementsArriveAndTimersFire) {
    manager_.setDelegate(delegates_[0]);
    runAll();
    EXPECT_EQ(broken_, 0);
    EXPECT_TRUE(heardEnough()) << discoveries_ << " discoveries, " << silences_ << " silences";
    manager_.stopScan();
    platform_->radio().setState(5);
    EXPECT_TRUE(manager_.startScan()) << "idle, and every lock is free";
    manager_.stopScan();
    checkRegistry(*manager_.getSettings());
    EXPECT_EQ(broken_, 0);
    for (const std::string& line : console_.lines()) {
        EXPECT_EQ(line.find("handler"), std::string::npos) << "nothing was thrown into a thread: " << line;
    }
}

TEST_F(ManagerStress, TheSameWithTheTraceOn) {
    std::atomic<std::uint64_t> records{0};
    LogWriter::Options options;
    options.sink = [&](const LogRecord& record) { records += record.anyString.size() < 10000 ? 1 : 0; };
    LogWriter::sharedInstance().start(std::move(options));
    manager_.setDelegate(delegates_[0]);
    runAll();
    manager_.stopScan();
    LogWriter::sharedInstance().stop();
    EXPECT_EQ(broken_, 0);
    EXPECT_GT(records, 0U);
}

}  // namespace
}  // namespace nearcast
