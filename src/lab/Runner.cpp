// SPDX-License-Identifier: Apache-2.0
#include "lab/Runner.h"

#include "lab/Performer.h"
#include "lab/Script.h"
#include "lines/LineReader.h"
#include "platform/NSLock.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <nearcast/LogWriter.h>

#include <memory>
#include <utility>

namespace nearcast::lab {

namespace {

const JSONSerialization JSON;

/// Writes down what the manager does to the console, its radio, its locks and its trace.
class Observation : public Console, public LockObserver, public VirtualRadioObserver {
public:
    explicit Observation(EventWriter::Out out) : writer_(std::move(out)) {}

    /// Watches for as long as what it gives back lives.
    [[nodiscard]] auto watch(const Timeline& timeline, const RunOptions& options) {
        struct End {
            ~End() { unwatch(); }
        };
        timeline_ = &timeline;
        if (options.locks) NSLock::setObserver(this);
        auto end = std::make_unique<End>();
        if (!options.trace) return end;
        LogWriter::Options tracing;
        tracing.synchronous = true;
        tracing.sink = [this](const LogRecord& record) {
            writer_.attempt([&] { writer_.trace(now(), record.logType, record.methodName, record.anyString); });
        };
        LogWriter::sharedInstance().start(std::move(tracing));
        return end;
    }

    void NSLog(std::string_view line) noexcept override {
        writer_.attempt([&] { writer_.console(now(), line); });
    }
    void lockChanged(std::string_view name, bool held) noexcept override {
        writer_.attempt([&] { writer_.lock(now(), name, held); });
    }
    void stopAsked() override {
        writer_.attempt([&] { writer_.centralStopped(now()); });
    }
    void scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) override {
        writer_.attempt([&] {
            std::optional<std::vector<std::string>> texts;
            if (services) {
                texts.emplace();
                for (const CBUUID& service : *services) texts->push_back(service.UUIDString());
            }
            writer_.centralScans(now(), texts, options.allowDuplicates);
        });
    }

    [[nodiscard]] EventWriter& writer() { return writer_; }

private:
    [[nodiscard]] lines::Time now() const { return timeline_ == nullptr ? lines::Time{0} : timeline_->now(); }

    static void unwatch() {
        NSLock::setObserver(nullptr);
        LogWriter::sharedInstance().stop();
    }

    EventWriter writer_;
    const Timeline* timeline_ = nullptr;
};

}  // namespace

void run(const std::vector<std::string>& paths, const RunOptions& options, EventWriter::Out out) {
    lines::LineReader reader(paths);
    // Never destroyed: the manager and its platform, which use it, live as long as the process.
    static std::unique_ptr<Observation> observation;
    auto watching = std::make_unique<Observation>(std::move(out));
    auto owned = std::make_unique<VirtualPlatform>(*watching, JSON, watching.get());
    VirtualPlatform& platform = *owned;
    setCurrentPlatform(std::move(owned));
    observation = std::move(watching);
    auto& manager = QXNearcastManager::sharedManager();

    EventWriter& writer = observation->writer();
    Performer performer(manager, platform, writer);
    // When a line cannot be read, calls in progress still end, but nothing more of them is written.
    const auto mute = [&writer] {
        writer.flush();
        writer.mute();
    };
    const auto perform = [&](const lines::Action& action) {
        writer.requireWritten();
        performer.perform(action);
    };
    Script script(reader, lines::Time{0}, perform, mute);
    auto watched = observation->watch(platform.timeline(), options);
    script.run(platform.timeline());
    watched.reset();
    manager.setDelegate(nullptr);
    writer.requireWritten();
    writer.flush();
    if (script.failure()) throw lines::InputError(*script.failure());
}

}  // namespace nearcast::lab
