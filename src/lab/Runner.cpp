// SPDX-License-Identifier: Apache-2.0
#include "lab/Runner.h"

#include "lab/Observation.h"
#include "lab/Performer.h"
#include "lab/Script.h"
#include "lines/LineReader.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <memory>
#include <utility>

namespace nearcast::lab {

namespace {

const JSONSerialization JSON;

}  // namespace

void run(lines::LineSource& source, const RunOptions& options, EventWriter::Out out) {
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
    Script script(source, lines::Time{0}, perform, mute);
    observation->follow(platform.timeline());
    {
        const Observation::Watch watch(*observation, options.trace, options.locks);
        script.run(platform.timeline());
    }
    manager.setDelegate(nullptr);
    writer.requireWritten();
    writer.flush();
    script.requireWhole();
}

void run(const std::vector<std::string>& paths, const RunOptions& options, EventWriter::Out out) {
    lines::LineReader reader(paths);
    run(reader, options, std::move(out));
}

}  // namespace nearcast::lab
