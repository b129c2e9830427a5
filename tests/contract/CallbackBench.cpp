// SPDX-License-Identifier: Apache-2.0
#include "contract/CallbackBench.h"

#include <nearcast/LogWriter.h>
#include <nearcast/Platform.h>

#include "doubles/ManagerBench.h"
#include "doubles/ThreadedPlatform.h"
#include "platform/factory/PlatformFactory.h"
#include "platform/json/JSONSerialization.h"
#include "platform/system/Consoles.h"
#include "platform/system/SystemClock.h"
#include "platform/system/SystemPlatform.h"
#include "support/Dongle.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <future>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace nearcast::contract {

namespace {

using namespace std::chrono_literals;

constexpr std::string_view ownDongle = doubles::ManagerBench::dongle;
constexpr std::string_view crowdsDongle = doubles::ManagerBench::secondDongle;
constexpr std::string_view nearestDongle = doubles::ManagerBench::thirdDongle;

const JSONSerialization serialization;

/// The machine's platform, on which everything takes a thousandth of its time.
class QuickPlatform : public SystemPlatform {
public:
    static constexpr int faster = 1000;

    QuickPlatform(Console& console, TimerService::Executor executor)
        : SystemPlatform(
              console, serialization,
              [this, &console](CBCentralManagerDelegate& delegate, RadioMonitor& monitor) {
                  auto made = std::make_unique<VirtualRadio>(delegate, console, monitor, nullptr);
                  radio = made.get();
                  return made;
              },
              TimerService::Loop::ownThread, std::move(executor)) {}

    [[nodiscard]] NSDate date() const override { return NSDate((SystemClock::now() - start_) * faster); }
    void usleep(std::chrono::microseconds duration) override { SystemPlatform::usleep(duration / faster); }
    std::shared_ptr<NSTimer> scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) override {
        return SystemPlatform::scheduledTimer(interval / faster, std::move(handler));
    }

    VirtualRadio* radio = nullptr;

private:
    const SystemClock::Time start_ = SystemClock::now();
};

std::string outcomeOf(const std::function<void()>& call) {
    try {
        call();
        return "yes";
    } catch (const std::system_error& error) {
        return error.code() == std::errc::resource_deadlock_would_occur ? "error" : error.what();
    } catch (const std::logic_error&) {
        return "error";
    } catch (const std::exception& error) {
        return error.what();
    }
}

void tolerate(const std::function<void()>& call) {
    try {
        call();
    } catch (const PortException&) {  // registered already, or nothing to register: both are wanted
    }
}

/// Returns when the platform's thread makes the time go.
void awaitDriver(doubles::ThreadedPlatform& platform) {
    std::promise<void> fired;
    const auto timer = platform.scheduledTimer(1us, [&](NSTimer& one) {
        one.invalidate();
        fired.set_value();
    });
    platform.give(1us);
    fired.get_future().wait();
}

}  // namespace

CallbackBench::CallbackBench(Clock clock) : manager_(make(*this, clock)) {
    manager_.setDelegate(delegate());
    NearestSettings settings;
    settings.dwell = 0;
    settings.silence = 60;
    nearest_ = std::make_unique<Nearest>(
        nearestSources(), [this](const NearestChange& /*change*/) { enter("Nearest::Changed"); }, settings);
    manager_.startScan(1);
}

/// With a clock that goes as it is read, and a radio that always hears, so that nothing of its own ends a choice.
Nearest::Sources CallbackBench::nearestSources() {
    return {[this] { return manager_.getSettings(); },
            [this] { return static_cast<double>(nearestClock_.fetch_add(1)) / 1000; },
            [] {
                RadioHealth health;
                health.state = CBManagerStatePoweredOn;
                return health;
            }};
}

QXNearcastManager& CallbackBench::make(CallbackBench& bench, Clock clock) {
    OpenedPlatform opened;
    opened.console = std::make_unique<CallbackConsole>([&bench](std::string_view /*line*/) { bench.enter("console"); });
    if (clock == Clock::machine) {
        const auto executor = [&bench](const std::function<void()>& task) {
            bench.enter("timerExecutor");
            task();
        };
        auto platform = std::make_unique<QuickPlatform>(*opened.console, executor);
        bench.radio_ = [quick = platform.get()]() -> VirtualRadio& { return *quick->radio; };
        opened.monitor = &platform->monitor();
        opened.drive = std::make_unique<SystemDrive>(*platform);
        opened.services = std::move(platform);
    } else {
        auto platform = std::make_unique<doubles::ThreadedPlatform>(*opened.console, serialization);
        bench.radio_ = [threaded = platform.get()]() -> VirtualRadio& { return threaded->radio(); };
        awaitDriver(*platform);
        opened.monitor = &platform->monitor();
        opened.drive = std::make_unique<TimelineDrive>(*platform);
        opened.services = std::move(platform);
    }
    opened.monitor->setHealthChanged([&bench](const RadioHealth& /*health*/) { bench.enter("radioHealthChanged"); });
    choosePlatform(std::move(opened));
    return QXNearcastManager::sharedManager();
}

std::shared_ptr<QXNearcastManagerDelegate> CallbackBench::delegate() {
    auto delegate = std::make_shared<QXNearcastManagerDelegate>();
    delegate->didDiscoverPort = [this](std::string_view, QXDeviceType, std::string_view, std::int32_t) {
        enter("didDiscoverPort");
    };
    delegate->didUpdateState = [this](std::string_view, std::string_view) { enter("didUpdateState"); };
    return delegate;
}

std::string CallbackBench::outcome(const std::string& callback, std::function<void()> call) {
    startSink(callback);
    Platform::setTap([this](const HeardAdvertisement& /*heard*/) { enter("tap"); });
    {
        const MutexLock lock(mutex_);
        wanted_ = callback;
        call_ = std::move(call);
        outcome_.clear();
    }
    constexpr int patience = 4000;  // for what hangs alone
    for (int times = 0; times < patience; ++times) {
        provoke(callback);
        if (awaitOutcome()) {
            const MutexLock lock(mutex_);
            return outcome_;
        }
    }
    return "it was not called";
}

bool CallbackBench::awaitOutcome() {
    MutexLock lock(mutex_);
    if (outcome_.empty()) changed_.wait_for(lock.native(), 5ms);
    return !outcome_.empty();
}

void CallbackBench::startSink(const std::string& callback) {
    const bool synchronous = callback == "synchronous sink";
    if (!synchronous && callback != "sink") return;
    LogWriter::Options options;
    options.synchronous = synchronous;
    // At the entry of an operation nothing is held.
    options.sink = [this, callback](const LogRecord& record) {
        if (record.logType == QXLogTypePavixAPIStart) enter(callback);
    };
    LogWriter::sharedInstance().start(std::move(options));
}

void CallbackBench::enter(std::string_view callback) {
    std::function<void()> call;
    {
        const MutexLock lock(mutex_);
        if (wanted_ != callback) return;
        wanted_.clear();
        call = std::move(call_);
    }
    std::string outcome = outcomeOf(call);
    const MutexLock lock(mutex_);
    outcome_ = std::move(outcome);
    changed_.notify_all();
}

void CallbackBench::provoke(const std::string& callback) {
    manager_.startScan(1);  // refused, with a line on the console, where a scan runs
    if (callback == "radioHealthChanged") {
        radio().setState(CBManagerStatePoweredOff);
        radio().setState(CBManagerStatePoweredOn);
    } else if (callback == "Nearest::Changed") {
        changeNearest();
    } else {
        hear(ownDongle);
        if (callback != "didUpdateState") hear(ownDongle);
    }
}

void CallbackBench::changeNearest() {
    tolerate([this] { manager_.addSettingForPrinterPortName("Nearest", {}, false, nearestDongle, -65, {}); });
    nearest_->refresh();
    nearest_->didDiscoverPort("Nearest", QXDeviceTypeDesktopPrinter, nearestDongle, -40);
    nearest_->update();
    manager_.removeSettingWithPortName("Nearest");
    nearest_->refresh();
}

void CallbackBench::hear(std::string_view address) {
    AdvertisingReport report;
    report.manufacturerData = doubles::ManagerBench::payloadOf(address);
    report.RSSI = -60;
    report.services.push_back(CBUUID::UUIDWithString(dongle::serviceUUID));
    radio().advertise(report);
}

void CallbackBench::whileOpen(std::function<void()> task) {
    threads_.emplace_back([this, task = std::move(task)] {
        while (open_.load()) {
            task();
            std::this_thread::yield();
        }
    });
}

void CallbackBench::gather() {
    whileOpen([this] {
        (void)manager_.getSettings();
        (void)manager_.serializedSettings();
        tolerate([this] { manager_.addSettingForPrinterPortName({}, {}, false, {}, {}, {}); });
        manager_.startScan();
        manager_.getRSSI(ownDongle);
        nearest_->update();
        turns_.fetch_add(1);
    });
    whileOpen([this] {
        hear(crowdsDongle);
        (void)Platform::radioHealth();
    });
}

void CallbackBench::end() {
    open_.store(false);
    for (std::thread& thread : threads_) thread.join();
    threads_.clear();
    manager_.setDelegate(nullptr);
    Platform::setTap({});
    manager_.stopScan();
    LogWriter::sharedInstance().stop();
}

}  // namespace nearcast::contract
