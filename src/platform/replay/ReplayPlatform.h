// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/Radio.h"
#include "platform/radio/RadioString.h"
#include "platform/replay/RecordingReader.h"
#include "platform/timeline/Nesting.h"
#include "platform/timeline/Timeline.h"
#include "platform/timeline/TimelinePlatform.h"
#include "support/Mutex.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace nearcast::replay {

/// Why a recording ended before its end. From any thread.
class ReplayFailure {
public:
    void set(std::string text) {
        const MutexLock lock(mutex_);
        text_ = std::move(text);
    }
    /// Empty while nothing is wrong.
    [[nodiscard]] std::string text() const {
        const MutexLock lock(mutex_);
        return text_;
    }

private:
    mutable Mutex mutex_;
    std::string text_ NEARCAST_GUARDED_BY(mutex_);
};

/// A recording to play.
struct Recording {
    std::string name;  ///< for messages
    std::unique_ptr<RecordingReader> reader;
    RecordingOptions options;
};

/// A radio that hears what a recording holds, when it was heard.
///
/// It is powered on from the begin. The recording's clock starts at the first scan and then runs on, whether a scan
/// runs or not, so restarting a scan neither repeats nor delays anything. Where the recording is damaged it ends, with
/// one line on the console; so it does where calls that it causes sleep too deep inside one another.
///
/// Scans may be started and stopped from any thread; reports and changes of state come on the thread that drives the
/// timeline.
class ReplayRadio : public Radio, public TimelineSource {
public:
    /// Becomes the timeline's source, until it is destroyed.
    /// @param delegate, console, monitor, timeline live longer than the radio
    /// @param failure told of damage; may be null
    ReplayRadio(CBCentralManagerDelegate& delegate, Console& console, RadioMonitor& monitor, Timeline& timeline,
                Recording recording, std::shared_ptr<ReplayFailure> failure = nullptr);
    ~ReplayRadio() override;
    ReplayRadio(const ReplayRadio&) = delete;
    ReplayRadio& operator=(const ReplayRadio&) = delete;

    /// Why the recording ended before its end, the text of the console line; empty when it did not. From any thread.
    [[nodiscard]] std::string failure() const { return failure_->text(); }

    std::optional<std::chrono::microseconds> due() override;
    void happen() override;

private:
    using Time = Timeline::Time;
    static constexpr Time notYet{-1};

    void scanChanged(const std::optional<Scan>& scan) override;
    void readNext();
    void fail(std::string_view problem);
    void happen(RecordedReport& report);
    void happen(const RecordedState& state);
    void happen(const RecordedEnd& end);

    Timeline& timeline_;
    std::shared_ptr<ReplayFailure> failure_;
    std::atomic<Time> started_{notYet};  ///< when the first scan began
    Recording recording_;                // this and the next two: the driving thread's alone
    std::optional<RecordedItem> next_;
    bool ended_ = false;
    Nesting nesting_;  // of the items in progress; as those above
};

/// What a radio string `replay:FILE?speed=...&as=...&services=...` asks for.
struct ReplayOptions {
    std::string path;
    std::optional<double> speed;  ///< times real time; nothing: as fast as it goes
    RecordingOptions recording;

    /// @throws std::invalid_argument for an option's value that is not understood
    static ReplayOptions parse(const RadioString& radio);
};

/// The platform of the radio `replay`.
class ReplayPlatform : public TimelinePlatform {
public:
    /// Opens the recording.
    /// @param console lives longer than the platform
    /// @param JSON    lives longer than the platform
    /// @param pace    as `options.speed` says; none: time passes as fast as it goes
    /// @throws what `openRecording` throws
    ReplayPlatform(Console& console, const NSJSONSerialization& JSON, std::unique_ptr<Pace> pace,
                   ReplayOptions options);

    /// Opens the radio; not while the timeline is driven. It is destroyed before the platform.
    std::unique_ptr<CBCentralManager> centralManager(CBCentralManagerDelegate& delegate) override;
    [[nodiscard]] std::string failure() const override;

private:
    ReplayOptions options_;
    std::unique_ptr<RecordingReader> reader_;  // until the radio is opened
    std::shared_ptr<ReplayFailure> failure_ = std::make_shared<ReplayFailure>();
};

}  // namespace nearcast::replay
