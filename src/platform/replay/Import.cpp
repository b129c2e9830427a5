// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/Import.h"

#include "platform/replay/RecordingWriter.h"

#include <utility>

namespace nearcast::replay {

namespace {

std::optional<RecordedItem> nextOf(RecordingReader& reader, const std::string& name, ImportResult& result) {
    try {
        return reader.next();
    } catch (const RecordingDamage& damage) {
        result.damage = name + ": " + damage.what();
        return std::nullopt;
    }
}

}  // namespace

ImportResult importRecording(const std::string& path, const RecordingOptions& options,
                             const std::function<void(std::string_view line)>& out) {
    return importRecording(*openRecording(path), path, options, out);
}

ImportResult importRecording(RecordingReader& reader, const std::string& name, const RecordingOptions& options,
                             const std::function<void(std::string_view line)>& out) {
    ImportResult result;
    while (auto item = nextOf(reader, name, result)) {
        if (auto* report = std::get_if<RecordedReport>(&*item)) {
            ++result.reports;
            result.malformed += report->malformed ? 1 : 0;
            options.apply(*report);
        }
        out(recordedLine(*std::move(item)));
    }
    return result;
}

}  // namespace nearcast::replay
