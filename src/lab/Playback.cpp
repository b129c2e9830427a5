// SPDX-License-Identifier: Apache-2.0
#include "lab/Playback.h"

#include "lab/EventWriter.h"
#include "lab/Performer.h"
#include "lab/PlaybackRecorder.h"
#include "lines/LineReader.h"
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

/// The record that the manager makes of a printer of which nothing but the dongle's address is known.
SettingRecordPointer recordOf(std::string_view MACAddr) {
    SettingRecord record;
    record.emplace(kQXDeviceType, static_cast<std::int64_t>(QXDeviceTypeDesktopPrinter));
    record.emplace(kQXWithDrawer, false);
    record.emplace(kQXNickName, "(null)");
    record.emplace(kQXDongleMACAddr, MACAddr);
    return std::make_shared<const SettingRecord>(std::move(record));
}

/// A registry that has every dongle of a recording.
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
        throw lines::ScenarioError(input.name + ": has more than " + std::to_string(mostDongles) +
                                   " dongles; settings that name the devices are needed");
    }
    return registry;
}

void requireShort(const PlaybackInput& input) {
    const auto tooLate = [](const lines::Line& line) { return line.at > longestPlayback; };
    if (std::none_of(input.lines.begin(), input.lines.end(), tooLate)) return;
    throw lines::ScenarioError(input.name + ": is longer than seven days");
}

/// The one manager of the process, with what it stands on.
class Stage {
public:
    static Stage& instance() {
        // The manager lives as long as the process, and so does what it stands on.
        static auto* const stage = new Stage;
        return *stage;
    }

    Playback play(const PlaybackInput& input);
    [[nodiscard]] QXNearcastManager& manager() const { return *manager_; }

private:
    class Script;

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
    bool runLines(const std::vector<lines::Line>& lines, lines::Time begin);
    void sweepOut();
    void tidy();

    Quiet console_;
    PlaybackRecorder recorder_;
    PlaybackPlatform* platform_ = nullptr;
    QXNearcastManager* manager_ = nullptr;
    EventWriter writer_{[](std::string_view) {}};
};

/// The lines as happenings on the timeline, whose clock may be far beyond zero.
class Stage::Script : public TimelineSource {
public:
    Script(Stage& stage, const std::vector<lines::Line>& lines, lines::Time begin)
        : stage_(stage), lines_(lines), begin_(begin) {}

    std::optional<lines::Time> due() override {
        if (next_ == lines_.size() || tooDeep_) return std::nullopt;
        return begin_ + lines_[next_].at;
    }
    void happen() override {
        if (next_ == lines_.size()) return;
        tooDeep_ = depth_ == deepest;
        if (tooDeep_) return;
        ++depth_;
        // Counted before it happens: a call may sleep, and then the next lines happen inside.
        stage_.perform(lines_[next_++].action);
        --depth_;
    }
    /// Whether it broke off because calls sleep too deep inside one another.
    [[nodiscard]] bool tooDeep() const { return tooDeep_; }

private:
    // As when a scenario is run: a line inside a sleep is on the stack of the call that sleeps.
    static constexpr int deepest = 500;

    Stage& stage_;
    const std::vector<lines::Line>& lines_;
    const lines::Time begin_;
    std::size_t next_ = 0;
    int depth_ = 0;  ///< lines that have begun to happen and not ended
    bool tooDeep_ = false;
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

/// @return false when calls sleep too deep inside one another
bool Stage::runLines(const std::vector<lines::Line>& lines, lines::Time begin) {
    Script script(*this, lines, begin);
    platform_->timeline().setSource(&script);
    platform_->timeline().runToLastHappening();
    platform_->timeline().setSource(nullptr);
    return !script.tooDeep();
}

/// Waits until every dongle has been told as silent, which empties the manager's table of them.
void Stage::sweepOut() { platform_->timeline().sleep(presenceTimeout + sweepInterval); }

/// Makes the manager like new after whatever a scenario did to it.
void Stage::tidy() {
    platform_->radio()->setState(CBManagerStatePoweredOn);
    manager_->setDelegate(recorder_.delegate(false, true));
    manager_->startScan(ordinarySamplingNumber);  // where a scan runs already, the sampling number alone is taken over
    sweepOut();
}

Playback Stage::play(const PlaybackInput& input) {
    requireShort(input);
    const lines::Time begin = now();
    recorder_.begin([this, begin] { return duration<double>(now() - begin).count(); });
    prepare(input);
    const bool whole = runLines(input.lines, begin);
    const double end = duration<double>(now() - begin).count();
    if (!isScenario(input.lines)) sweepOut();
    Playback playback = recorder_.take();
    if (isScenario(input.lines)) tidy();
    platform_->radio()->setState(CBManagerStatePoweredOn);
    manager_->stopScan();
    manager_->setDelegate(nullptr);
    manager_->setSettings(std::nullopt);
    if (!whole) throw lines::ScenarioError(input.name + ": too many calls sleep inside one another");
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

QXNearcastManager& playbackManager() { return Stage::instance().manager(); }

}  // namespace nearcast::lab
