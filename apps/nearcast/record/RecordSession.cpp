// SPDX-License-Identifier: Apache-2.0
#include "record/RecordSession.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <utility>

namespace nearcast::cli {

/// The times of a recording never go back, but two threads may come here in the wrong order. A full disk ends the
/// recording, not the radio's thread.
template <class Item>
void RecordSession::write(Item item) {
    if (!broken_.empty()) return;
    last_ = item.at = std::max(item.at, last_);
    try {
        writer_->write(std::move(item));
    } catch (const std::exception& error) {
        broken_ = error.what();
        broke_();
    }
}

void RecordSession::begin(CBManagerState state) {
    RadioHealth health;
    health.state = state;
    changed(health, Time(0));
}

void RecordSession::heard(const AdvertisingReport& report, Time at) {
    const MutexLock lock(mutex_);
    ++reports_;
    write(replay::RecordedReport{at, report, false});
}

void RecordSession::changed(const RadioHealth& health, Time at) {
    const MutexLock lock(mutex_);
    if (health.state == state_) return;
    state_ = health.state;
    write(replay::RecordedState{at, health.state});
}

void RecordSession::end(Time at) {
    const MutexLock lock(mutex_);
    write(replay::RecordedEnd{at});
    if (!broken_.empty()) throw std::runtime_error(broken_);
}

std::uint64_t RecordSession::reports() {
    const MutexLock lock(mutex_);
    return reports_;
}

}  // namespace nearcast::cli
