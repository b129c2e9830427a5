// SPDX-License-Identifier: Apache-2.0
#include "platform/timers/TimerQueue.h"

#include <algorithm>

namespace nearcast {

namespace {

using Time = TimerQueue::Time;

/// Later than any clock gets where the sum would overflow.
Time later(Time moment, Time duration) { return moment > Time::max() - duration ? Time::max() : moment + duration; }

/// The first of the times `due`, `due` + `interval`, ... after `now`.
Time firstAfter(Time now, Time due, Time interval) {
    if (now < due) return due;
    const auto passed = (now - due) / interval;
    return later(due + passed * interval, interval);
}

}  // namespace

TimerQueue::Timer::Timer(std::weak_ptr<TimerQueue> queue, Time interval, Handler handler, NSTimerService::Idle idle,
                         Key key)
    : queue_(std::move(queue)),
      interval_(interval),
      key_(key),
      task_(std::make_shared<const Task>(Task{std::move(handler), std::move(idle)})) {}

std::shared_ptr<const TimerQueue::Timer::Task> TimerQueue::Timer::task() const {
    const MutexLock lock(mutex_);
    return task_;
}

void TimerQueue::Timer::fire() {
    const auto self = shared_from_this();  // the handler may drop the last other reference
    if (const auto task = this->task()) task->handler(*this);
}

bool TimerQueue::Timer::isIdle() const {
    const auto task = this->task();
    return !task || (task->idle && task->idle());
}

void TimerQueue::Timer::invalidate() {
    const auto self = shared_from_this();
    if (!disarm()) return;
    if (const auto queue = queue_.lock()) queue->remove(*this);
}

bool TimerQueue::Timer::isValid() const {
    const MutexLock lock(mutex_);
    return task_ != nullptr;
}

bool TimerQueue::Timer::disarm() {
    std::shared_ptr<const Task> last;  // what it holds is destroyed after the lock is released
    const MutexLock lock(mutex_);
    last.swap(task_);
    return last != nullptr;
}

TimerQueue::TimerQueue(FrontChanged frontChanged) : frontChanged_(std::move(frontChanged)) {}

std::shared_ptr<NSTimer> TimerQueue::add(Time interval, NSTimer::Handler handler, Time now, NSTimerService::Idle idle) {
    const Time period = std::max(interval, Time{1});
    std::shared_ptr<Timer> timer;
    {
        const MutexLock lock(mutex_);
        timer = std::make_shared<Timer>(weak_from_this(), period, std::move(handler), std::move(idle),
                                        Key{later(now, period), made_++});
        if (!cleared_) {
            timers_.emplace(timer->key_, timer);
            tellFrontIfChanged();
            return timer;
        }
    }
    timer->disarm();
    return timer;
}

std::optional<Time> TimerQueue::nextDue() const {
    const MutexLock lock(mutex_);
    return front();
}

std::shared_ptr<TimerQueue::Timer> TimerQueue::takeDue(Time limit, Time now) {
    const MutexLock lock(mutex_);
    if (timers_.empty() || timers_.begin()->first.first > limit) return nullptr;
    auto timer = postponeFront(now);
    tellFrontIfChanged();
    return timer;
}

/// The timer that is due first is due again at the first of its times after `now`.
std::shared_ptr<TimerQueue::Timer> TimerQueue::postponeFront(Time now) {
    auto node = timers_.extract(timers_.begin());
    auto timer = node.mapped();
    timer->key_.first = firstAfter(now, timer->key_.first, timer->interval_);
    node.key() = timer->key_;
    timers_.insert(std::move(node));
    return timer;
}

std::pair<TimerQueue::Key, std::shared_ptr<TimerQueue::Timer>> TimerQueue::firstBehind(const Key& key) const {
    const MutexLock lock(mutex_);
    const auto found = timers_.upper_bound(key);
    if (found == timers_.end()) return {};
    return {found->first, found->second};
}

TimerQueue::Lull TimerQueue::lullBefore(Time limit) const {
    Lull lull{limit, 0};
    {
        const MutexLock lock(mutex_);
        lull.made = made_;
    }
    Key last{Time::min(), 0};
    for (;;) {
        const auto [key, timer] = firstBehind(last);
        if (!timer || key.first >= limit) return lull;
        if (!timer->isIdle()) return {key.first, lull.made};
        last = key;
    }
}

bool TimerQueue::passOver(const Lull& lull) {
    const MutexLock lock(mutex_);
    if (made_ != lull.made) return false;
    while (!timers_.empty() && timers_.begin()->first.first < lull.end) postponeFront(lull.end - Time{1});
    tellFrontIfChanged();
    return true;
}

void TimerQueue::tellFront() {
    const MutexLock lock(mutex_);
    told_ = front();
    if (frontChanged_) frontChanged_(told_);
}

void TimerQueue::clear() {
    std::map<Key, std::shared_ptr<Timer>> ended;
    {
        const MutexLock lock(mutex_);
        cleared_ = true;
        ended.swap(timers_);
        tellFrontIfChanged();
    }
    for (const auto& [key, timer] : ended) timer->disarm();
}

void TimerQueue::remove(const Timer& timer) {
    std::shared_ptr<Timer> last;
    const MutexLock lock(mutex_);
    const auto found = timers_.find(timer.key_);
    if (found == timers_.end()) return;
    last = std::move(found->second);
    timers_.erase(found);
    tellFrontIfChanged();
}

void TimerQueue::tellFrontIfChanged() {
    const auto now = front();
    if (now == told_) return;
    told_ = now;
    if (frontChanged_) frontChanged_(now);
}

std::optional<Time> TimerQueue::front() const {
    if (timers_.empty()) return std::nullopt;
    return timers_.begin()->first.first;
}

}  // namespace nearcast
