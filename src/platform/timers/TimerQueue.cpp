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

TimerQueue::Timer::Timer(std::weak_ptr<TimerQueue> queue, Time interval, Handler handler, Key key)
    : queue_(std::move(queue)),
      interval_(interval),
      key_(key),
      handler_(std::make_shared<const Handler>(std::move(handler))) {}

void TimerQueue::Timer::fire() {
    const auto self = shared_from_this();  // the handler may drop the last other reference
    std::shared_ptr<const Handler> handler;
    {
        const MutexLock lock(mutex_);
        handler = handler_;
    }
    if (handler) (*handler)(*this);
}

void TimerQueue::Timer::invalidate() {
    const auto self = shared_from_this();
    if (!disarm()) return;
    if (const auto queue = queue_.lock()) queue->remove(*this);
}

bool TimerQueue::Timer::isValid() const {
    const MutexLock lock(mutex_);
    return handler_ != nullptr;
}

bool TimerQueue::Timer::disarm() {
    std::shared_ptr<const Handler> last;  // what it holds is destroyed after the lock is released
    const MutexLock lock(mutex_);
    last.swap(handler_);
    return last != nullptr;
}

TimerQueue::TimerQueue(FrontChanged frontChanged) : frontChanged_(std::move(frontChanged)) {}

std::shared_ptr<NSTimer> TimerQueue::add(Time interval, NSTimer::Handler handler, Time now) {
    const Time period = std::max(interval, Time{1});
    std::shared_ptr<Timer> timer;
    {
        const MutexLock lock(mutex_);
        timer = std::make_shared<Timer>(weak_from_this(), period, std::move(handler), Key{later(now, period), made_++});
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
    auto node = timers_.extract(timers_.begin());
    auto timer = node.mapped();
    timer->key_.first = firstAfter(now, timer->key_.first, timer->interval_);
    node.key() = timer->key_;
    timers_.insert(std::move(node));
    tellFrontIfChanged();
    return timer;
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
