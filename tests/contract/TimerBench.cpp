// SPDX-License-Identifier: Apache-2.0
#include "contract/TimerBench.h"

#include "platform/json/JSONSerialization.h"
#include "platform/radio/NoRadio.h"
#include "platform/system/RealPace.h"
#include "platform/system/SystemPlatform.h"
#include "platform/timeline/TimelinePlatform.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <utility>

namespace nearcast::contract {

namespace {

using namespace std::chrono_literals;

constexpr auto deadline = 20s;
const JSONSerialization JSON;

SystemPlatform::OpenRadio noRadio(Console& console) {
    return [&console](CBCentralManagerDelegate& delegate, RadioMonitor& monitor) {
        return std::make_unique<NoRadio>(delegate, console, monitor, "there is no radio");
    };
}

/// An executor: one thread that runs tasks in order.
class TaskThread {
public:
    TaskThread() : thread_([this] { run(); }) {}
    ~TaskThread() {
        {
            const MutexLock lock(mutex_);
            ending_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    TaskThread(const TaskThread&) = delete;
    TaskThread& operator=(const TaskThread&) = delete;

    void add(std::function<void()> task) {
        {
            const MutexLock lock(mutex_);
            tasks_.push_back(std::move(task));
        }
        changed_.notify_all();
    }

private:
    void run() {
        MutexLock lock(mutex_);
        while (true) {
            while (tasks_.empty() && !ending_) changed_.wait(lock.native());
            if (ending_) return;
            const auto task = std::move(tasks_.front());
            tasks_.pop_front();
            lock.unlock();
            task();
            lock.lock();
        }
    }

    Mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::function<void()>> tasks_ NEARCAST_GUARDED_BY(mutex_);
    bool ending_ NEARCAST_GUARDED_BY(mutex_) = false;
    std::thread thread_;
};

NSDate machineDate() { return NSDate(SystemClock::now()); }

class OwnThreadBench : public TimerBench {
public:
    OwnThreadBench() : TimerBench(machineDate) {}
    PlatformServices& platform() override { return platform_; }
    bool awaitNotes(std::size_t count) override { return waitForNotes(count); }

private:
    SystemPlatform platform_{console, JSON, noRadio(console), TimerService::Loop::ownThread, nullptr};
};

class ExecutorBench : public TimerBench {
public:
    ExecutorBench() : TimerBench(machineDate) {}
    PlatformServices& platform() override { return platform_; }
    bool awaitNotes(std::size_t count) override { return waitForNotes(count); }

private:
    TaskThread executor_;
    SystemPlatform platform_{console, JSON, noRadio(console), TimerService::Loop::ownThread,
                             [this](std::function<void()> task) { executor_.add(std::move(task)); }};
};

class LoopBench : public TimerBench {
public:
    LoopBench() : TimerBench(machineDate) {}
    PlatformServices& platform() override { return platform_; }
    bool awaitNotes(std::size_t count) override {
        const auto end = SystemClock::now() + deadline;
        while (notes().size() < count && SystemClock::now() < end) drive_.runFor(1ms);
        return notes().size() >= count;
    }

private:
    SystemPlatform platform_{console, JSON, noRadio(console), TimerService::Loop::application, nullptr};
    SystemDrive drive_{platform_};
};

class TimelineWithoutRadio : public TimelinePlatform {
public:
    using TimelinePlatform::TimelinePlatform;
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override {
        return std::make_unique<NoRadio>(delegate, *this, monitor(), "there is no radio");
    }
};

class VirtualBench : public TimerBench {
public:
    VirtualBench() : TimerBench([this] { return NSDate(timeline_.now()); }) {}
    PlatformServices& platform() override { return platform_; }
    bool awaitNotes(std::size_t count) override {
        const auto end = timeline_.now() + deadline;
        while (notes().size() < count && timeline_.now() < end) timeline_.runUntil(timeline_.now() + 1ms);
        return notes().size() >= count;
    }

private:
    TimelineWithoutRadio platform_{console, JSON, nullptr};
    Timeline& timeline_ = platform_.timeline();
};

/// A timeline that a thread of its own drives in real time.
class DrivenBench : public TimerBench {
public:
    DrivenBench() : TimerBench([this] { return NSDate(timeline_.now()); }) { timeline_.driveFromThread(); }
    PlatformServices& platform() override { return platform_; }
    bool awaitNotes(std::size_t count) override { return waitForNotes(count); }

private:
    TimelineWithoutRadio platform_{console, JSON, std::make_unique<RealPace>(1)};
    Timeline& timeline_ = platform_.timeline();
};

}  // namespace

void TimerBench::note(const std::string& name) {
    const NSDate date = date_();
    const MutexLock lock(mutex_);
    notes_.push_back({name, date, std::this_thread::get_id()});
    noted_.notify_all();
}

std::vector<Note> TimerBench::notes() const {
    const MutexLock lock(mutex_);
    return notes_;
}

std::size_t TimerBench::notesOf(std::string_view name) const {
    const auto all = notes();
    return static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [&](const Note& note) { return note.name == name; }));
}

bool TimerBench::waitForNotes(std::size_t count) const {
    const auto end = std::chrono::steady_clock::now() + deadline;
    MutexLock lock(mutex_);
    while (notes_.size() < count) {
        if (noted_.wait_until(lock.native(), end) == std::cv_status::timeout) break;
    }
    return notes_.size() >= count;
}

std::unique_ptr<TimerBench> timersOnTheirOwnThread() { return std::make_unique<OwnThreadBench>(); }
std::unique_ptr<TimerBench> timersOnAnExecutor() { return std::make_unique<ExecutorBench>(); }
std::unique_ptr<TimerBench> timersOnTheApplicationsLoop() { return std::make_unique<LoopBench>(); }
std::unique_ptr<TimerBench> timersOnVirtualTime() { return std::make_unique<VirtualBench>(); }
std::unique_ptr<TimerBench> timersOnADrivenTimeline() { return std::make_unique<DrivenBench>(); }

}  // namespace nearcast::contract
