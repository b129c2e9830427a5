// SPDX-License-Identifier: Apache-2.0
#include "lab/Observation.h"

#include <nearcast/LogWriter.h>

#include <string>

namespace nearcast::lab {

Observation::Watch::Watch(Observation& observation, bool trace, bool locks) {
    if (locks) NSLock::setObserver(&observation);
    if (!trace) return;
    LogWriter::Options tracing;
    tracing.synchronous = true;
    tracing.sink = [&observation](const LogRecord& record) {
        EventWriter& writer = observation.writer();
        writer.attempt([&] { writer.trace(observation.now(), record.logType, record.methodName, record.anyString); });
    };
    LogWriter::sharedInstance().start(std::move(tracing));
}

Observation::Watch::~Watch() {
    NSLock::setObserver(nullptr);
    LogWriter::sharedInstance().stop();
}

void Observation::NSLog(std::string_view line) noexcept {
    writer_.attempt([&] { writer_.console(now(), line); });
}

void Observation::lockChanged(std::string_view name, bool held) noexcept {
    writer_.attempt([&] { writer_.lock(now(), name, held); });
}

void Observation::stopAsked() {
    writer_.attempt([&] { writer_.centralStopped(now()); });
}

void Observation::scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) {
    writer_.attempt([&] {
        std::optional<std::vector<std::string>> texts;
        if (services) {
            texts.emplace();
            for (const CBUUID& service : *services) texts->push_back(service.UUIDString());
        }
        writer_.centralScans(now(), texts, options.allowDuplicates);
    });
}

}  // namespace nearcast::lab
