// SPDX-License-Identifier: Apache-2.0
#include "lab/Playback.h"

#include "lab/EventWriter.h"
#include "lab/Performer.h"
#include "lab/PlaybackRecorder.h"
#include "lab/Script.h"
#include "platform/json/JSONSerialization.h"
#include "support/Dongle.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace nearcast::lab {

namespace {

using std::chrono::duration;

constexpr std::uint64_t ordinarySamplingNumber = 7;
constexpr std::chrono::seconds presenceTimeout{5};
constexpr std::chrono::seconds sweepInterval{5};

const JSONSerialization JSON;

class Quiet : public Console {
public:
    void NSLog(std::string_view /*line*/) noexcept override {}
};

/// The record that the manager makes of a printer when only its dongle's address is known.
SettingRecordPointer recordOf(std::string_view MACAddr) {
    SettingRecord record;
    record.emplace(kQXDeviceType, static_cast<std::int64_t>(QXDeviceTypeDesktopPrinter));
    record.emplace(kQXWithDrawer, false);
    record.emplace(kQXNickName, "(null)");
    record.emplace(kQXDongleMACAddr, MACAddr);
    return std::make_shared<const SettingRecord>(std::move(record));
}

/// A registry of all dongles in a recording.
Settings donglesOf(const PlaybackInput& input) {
    Settings registry;
    for (const lines::Line& line : input.lines) {
        const auto* advertise = std::get_if<lines::Advertise>(&line.action);
        if (advertise == nullptr) continue;
        DongleAddress address;
        if (!address.read(advertise->manufacturerData, advertise->name)) continue;
        if (registry.find(address.text()) != registry.end()) continue;
        registry.emplace(address.text(), recordOf(address.text()));
        if (registry.size() <= mostDongles) continue;
        throw lines::InputError(input.name + ": has more than " + std::to_string(mostDongles) +
                                " dongles; settings that name the devices are needed");
    }
    return registry;
}

/// How much of it is played second by second: of a time that the clock may leap over, as much as it never does.
lines::Time playedTime(const std::vector<lines::Line>& lines) {
    lines::Time played{0};
    lines::Time before{0};
    for (const lines::Line& line : lines) {
        const lines::Time at = std::max(line.at, before);  // a time that has passed means now
        played += std::min(at - before, Timeline::longestQuiet);
        before = at;
    }
    return played;
}

bool isEarlier(const lines::Line& left, const lines::Line& right) { return left.at < right.at; }

/// @param begin the clock's time that is 0 in the lines
void requireShort(const PlaybackInput& input, lines::Time begin) {
    if (input.lines.empty()) return;
    if (playedTime(input.lines) > longestPlayback) {
        throw lines::InputError(input.name + ": has more than seven days to be played second by second");
    }
    // After the last line, silences still come.
    const auto last = std::max_element(input.lines.begin(), input.lines.end(), isEarlier);
    if (last->at > Timeline::forever - begin - std::chrono::minutes(1)) {
        throw lines::InputError(input.name + ": is together with the recordings before it longer than 291 years");
    }
}

/// The lines of an input, which are in memory.
class HeldLines : public lines::LineSource {
public:
    explicit HeldLines(const PlaybackInput& input) : input_(input) {}

    std::optional<lines::Line> next() override {
        if (next_ == input_.lines.size()) return std::nullopt;
        return input_.lines[next_++];
    }
    std::optional<lines::Time> peekTime() override {
        if (next_ == input_.lines.size()) return std::nullopt;
        return input_.lines[next_].at;
    }
    [[nodiscard]] std::string place() const override { return input_.name; }

private:
    const PlaybackInput& input_;
    std::size_t next_ = 0;
};

/// The process's manager, with the platform and the console that it uses.
class Stage {
public:
    static Stage& instance() {
        // Never destroyed: the manager, which uses it, lives as long as the process.
        static auto* const stage = new Stage;
        return *stage;
    }

    Playback play(const PlaybackInput& input);

private:
    Stage() {
        auto owned = std::make_unique<PlaybackPlatform>(console_, JSON, recorder_);
        platform_ = owned.get();
        setCurrentPlatform(std::move(owned));
        manager_ = &QXNearcastManager::sharedManager();
        writer_.mute();
    }

    [[nodiscard]] lines::Time now() const { return platform_->timeline().now(); }
    void prepare(const PlaybackInput& input);
    void perform(const lines::Action& action);
    void sweepOut();
    void tidy();

    Quiet console_;
    PlaybackRecorder recorder_;
    PlaybackPlatform* platform_ = nullptr;
    QXNearcastManager* manager_ = nullptr;
    EventWriter writer_{[](std::string_view) {}};
};

void Stage::prepare(const PlaybackInput& input) {
    if (isScenario(input.lines)) return;
    manager_->setSettings(input.registry ? *input.registry : donglesOf(input));
    recorder_.noteRegistry(*manager_->getSettings());
    manager_->setDelegate(recorder_.delegate(true, true));
    manager_->startScan(ordinarySamplingNumber);
}

void Stage::perform(const lines::Action& action) {
    Performer performer(*manager_, *platform_, writer_);
    performer.perform(action);
    if (std::holds_alternative<lines::Advertise>(action)) return;
    recorder_.noteRegistry(*manager_->getSettings());
    if (!std::holds_alternative<lines::SetDelegate>(action)) return;
    if (const auto asked = manager_->delegate()) {
        manager_->setDelegate(recorder_.delegate(asked->didDiscoverPort != nullptr, asked->didUpdateState != nullptr));
    }
}

/// Waits until the manager has reported every dongle as silent, which empties its table of dongles.
void Stage::sweepOut() { platform_->timeline().sleep(presenceTimeout + sweepInterval); }

/// Resets the manager after a scenario.
void Stage::tidy() {
    platform_->radio()->setState(CBManagerStatePoweredOn);
    manager_->setDelegate(recorder_.delegate(false, true));
    manager_->startScan(ordinarySamplingNumber);  // if a scan is running, this changes only the sampling number
    sweepOut();
}

Playback Stage::play(const PlaybackInput& input) {
    const lines::Time begin = now();
    requireShort(input, begin);
    recorder_.begin([this, begin] { return duration<double>(now() - begin).count(); });
    prepare(input);
    HeldLines held(input);
    Script script(held, begin, [this](const lines::Action& action) { perform(action); });
    script.run(platform_->timeline());
    const double end = duration<double>(now() - begin).count();
    if (!isScenario(input.lines)) sweepOut();
    Playback playback = recorder_.take();
    if (isScenario(input.lines)) tidy();
    platform_->radio()->setState(CBManagerStatePoweredOn);
    manager_->stopScan();
    manager_->setDelegate(nullptr);
    manager_->setSettings(std::nullopt);
    script.requireWhole();
    playback.name = input.name;
    playback.end = end;
    return playback;
}

}  // namespace

bool isScenario(const std::vector<lines::Line>& lines) {
    return std::any_of(lines.begin(), lines.end(), [](const lines::Line& line) {
        return !std::holds_alternative<lines::Advertise>(line.action) &&
               !std::holds_alternative<lines::RadioState>(line.action) &&
               !std::holds_alternative<lines::End>(line.action);
    });
}

Playback play(const PlaybackInput& input) { return Stage::instance().play(input); }

void requireKnown(const lines::Truth& truth, const Playback& playback, const std::string& path) {
    for (const lines::TruthMark& mark : truth) {
        const bool known = mark.MACAddr.empty() ||
                           std::any_of(playback.dongles.begin(), playback.dongles.end(), [&](const auto& dongle) {
                               return !dongle.portName.empty() && dongle.MACAddr == mark.MACAddr;
                           });
        if (known) continue;
        throw lines::InputError(path + ":" + std::to_string(mark.line) + ": \"" + mark.MACAddr +
                                "\" is the address of no device in " + playback.name);
    }
}

}  // namespace nearcast::lab
