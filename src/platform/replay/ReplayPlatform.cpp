// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/ReplayPlatform.h"

#include "platform/timeline/TimelinePlatform.h"

#include <exception>
#include <utility>

namespace nearcast::replay {

ReplayRadio::ReplayRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor,
                         Timeline& timeline, Recording recording, std::shared_ptr<ReplayFailure> failure)
    : Radio(delegate, console, monitor, CBManagerStatePoweredOn),
      timeline_(timeline),
      failure_(failure ? std::move(failure) : std::make_shared<ReplayFailure>()),
      recording_(std::move(recording)) {
    timeline_.setSource(this);
}

ReplayRadio::~ReplayRadio() { timeline_.setSource(nullptr); }

void ReplayRadio::scanChanged(const std::optional<Scan>& scan) {
    if (!scan) return;
    Time expected = notYet;
    if (started_.compare_exchange_strong(expected, timeline_.now())) timeline_.sourceChanged();
}

std::optional<std::chrono::microseconds> ReplayRadio::due() {
    const Time started = started_.load();
    if (started == notYet) return Timeline::forever + Time(1);  // there is more to come, but not by itself
    if (!next_ && !ended_) readNext();
    if (!next_) return std::nullopt;
    return started + timeOf(*next_);
}

void ReplayRadio::readNext() {
    try {
        next_ = recording_.reader->next();
    } catch (const std::exception& problem) {
        fail(problem.what());
    }
    ended_ = !next_;
}

void ReplayRadio::fail(std::string_view problem) {
    const std::string text = (recording_.name + ": ").append(problem);
    failure_->set(text);
    console().NSLog(text);
}

void ReplayRadio::happen() {
    if (!next_) return;
    // Taken away before it happens: a handler may sleep, and then the next items happen inside.
    RecordedItem item = *std::exchange(next_, std::nullopt);
    if (nesting_.full()) {
        ended_ = true;
        return fail(Nesting::complaint);
    }
    const Nesting::Inside inside(nesting_);
    std::visit([this](auto& one) { happen(one); }, item);
}

void ReplayRadio::happen(RecordedReport& report) {
    recording_.options.apply(report);
    deliver(report.report);
}

void ReplayRadio::happen(const RecordedState& state) { changeState(static_cast<CBManagerState>(state.state)); }

void ReplayRadio::happen(const RecordedEnd& /*end*/) {}

ReplayOptions ReplayOptions::parse(const RadioString& radio) {
    return {.path = radio.argument, .speed = parseSpeed(radio), .recording = RecordingOptions::parse(radio)};
}

ReplayPlatform::ReplayPlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace,
                               ReplayOptions options)
    : TimelinePlatform(console, JSON, std::move(pace)),
      options_(std::move(options)),
      reader_(openRecording(options_.path)) {
    timeline().allowLeaps();
}

std::unique_ptr<CBCentralManager> ReplayPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    auto reader = reader_ ? std::move(reader_) : openRecording(options_.path);
    return std::make_unique<ReplayRadio>(delegate, *this, monitor(), timeline(),
                                         Recording{nameOfInput(options_.path), std::move(reader), options_.recording},
                                         failure_);
}

std::string ReplayPlatform::failure() const {
    const std::string damage = failure_->text();
    return damage.empty() ? TimelinePlatform::failure() : damage;
}

}  // namespace nearcast::replay
