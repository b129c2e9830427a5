// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/DeadScan.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <utility>

namespace nearcast::bluez {

namespace {

/// 0 of "/org/bluez/hci0".
std::optional<std::uint16_t> numberOf(std::string_view adapter) {
    constexpr std::string_view mark = "/hci";
    const std::size_t place = adapter.rfind(mark);
    if (place == std::string_view::npos) return std::nullopt;
    const std::string_view digits = adapter.substr(place + mark.size());
    std::uint16_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec != std::errc() || read.ptr != digits.data() + digits.size()) return std::nullopt;
    return number;
}

}  // namespace

void DeadScan::watch(const std::string& adapter) { kernel_.watch(adapter.empty() ? std::nullopt : numberOf(adapter)); }

void DeadScan::forgetDaemon() {
    orphansUntil_ = now_ + orphanLimit;
    clear();
}

void DeadScan::asked() {
    asked_ = true;
    askedAt_ = now_;
    heardAt_.reset();
    lookAt_ = lookAt();
    if (!stoodStill_) standstill_.begin(now_);
}

/// Any report proves that the scan lives.
void DeadScan::heard() {
    heardAt_ = now_;
    signs_ = 0;
    if (std::exchange(stoodStill_, false)) standstill_.begin(now_);
    if (!unproven_) return;
    dead_ = unproven_ = false;
    pause_.reset();
    listener_.changed();
}

/// One that succeeds says little of a dead one: another client's discovery lets it.
void DeadScan::stopAnswered(const std::optional<Failure>& failure) {
    if (!failure) {
        refused_ = false;
        signs_ = 0;
    } else if (failure->name == error::inProgress) {
        refused_ = true;
    } else if (std::exchange(refused_, false) && failure->name == error::failed && ++signs_ > 1) {
        find();
    }
}

void DeadScan::find() {
    if (std::exchange(dead_, true)) return;
    unproven_ = true;
    listener_.changed();
}

/// It may live, as far as anybody knows.
void DeadScan::clear() {
    refused_ = false;
    signs_ = 0;
    if (std::exchange(dead_, false)) listener_.changed();
}

void DeadScan::pass(Time now) {
    now_ = now;
    kernel_.pass(now);
    if (dead_ && !mending_ && kernel_.runs() == true) {
        clear();
        listener_.revived();
    }
    const std::optional<Time> at = lookAt();
    if (at && now_ >= *at) {
        if (kernel_.runs() == false) find();
        mend();
    }
    lookAt_ = lookAt();
    lookForStandstill();
}

/// Where the kernel tells of its rounds there is no need to count.
void DeadScan::lookForStandstill() {
    const std::optional<Time> at = standstill_.due();
    if (!at || now_ < *at) return;
    if (!asked_ || dead_ || kernel_.usable()) return standstill_.end();
    const Time silence = now_ - heardAt_.value_or(askedAt_);
    stoodStill_ = standstill_.rings(now_, silence, [this] { return kernel_.events(); });
    if (!stoodStill_) return;
    standstill_.end();
    listener_.still();
}

std::optional<Time> DeadScan::due() const {
    std::optional<Time> earliest = kernel_.due();
    takeEarlier(earliest, lookAt_);
    takeEarlier(earliest, standstill_.due());
    return earliest;
}

/// When to ask the kernel: when its discovery has been missing for long enough, and nothing is heard. One of which it
/// has said nothing yet was running before we listened, so that it is asked only if nothing is heard at all.
std::optional<Time> DeadScan::lookAt() const {
    const std::optional<bool> runs = kernel_.runs();
    if (!asked_ || mending_ || !kernel_.usable() || runs == true || (!runs && heardAt_)) return std::nullopt;
    Time at = std::max({askedAt_ + startLimit, mendAt_, kernel_.presumedUntil()});
    if (runs) at = std::max(at, kernel_.missedFrom());
    if (heardAt_) at = std::max(at, *heardAt_ + hush);
    return at;
}

void DeadScan::mend() {
    mending_ = true;
    kernel_.revive([this](KernelScan::Outcome outcome) { mended(outcome); });
}

void DeadScan::mended(KernelScan::Outcome outcome) {
    mending_ = false;
    mendAt_ = now_ + pause_.next();
    switch (outcome) {
        case KernelScan::Outcome::mended: return find();                  // none ran: so it was dead
        case KernelScan::Outcome::forbidden: return listener_.changed();  // what helps is another thing now
        case KernelScan::Outcome::needless:
        case KernelScan::Outcome::failed: return;
    }
}

bool DeadScan::release(const Failure& failure, bool discovers, std::function<void(bool)> done) {
    const bool maybe = failure.name == error::inProgress && !discovers && now_ < orphansUntil_;
    if (!maybe || mending_ || !kernel_.usable()) return false;
    mending_ = true;
    kernel_.release([this, done = std::move(done)](KernelScan::Outcome outcome) {
        mending_ = false;
        done(outcome == KernelScan::Outcome::mended);
    });
    return true;
}

}  // namespace nearcast::bluez
