// SPDX-License-Identifier: Apache-2.0
#include "common/PlaybackFile.h"

#include "common/UsageError.h"
#include "lines/LineReader.h"
#include "platform/replay/RecordingReader.h"
#include "platform/replay/RecordingWriter.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace nearcast::cli {

namespace {

// The whole file is held in memory.
constexpr std::size_t mostLines = 5'000'000;

using Lines = std::vector<lines::Line>;

void append(Lines& lines, lines::Line line, const std::string& path) {
    if (lines.size() == mostLines) {
        throw UsageError(path + ": has more than " + std::to_string(mostLines) + " lines or reports");
    }
    lines.push_back(std::move(line));
}

/// Whether it begins like JSON Lines. A pcapng begins with line ends too, and then with a length that is no brace.
bool isJSONLines(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (file == nullptr) throw UsageError(path + ": cannot be opened: " + std::strerror(errno));
    int octet = ' ';
    while (octet == ' ' || octet == '\t' || octet == '\r' || octet == '\n') octet = std::fgetc(file.get());
    if (std::ferror(file.get()) != 0) throw UsageError(path + ": cannot be read: " + std::strerror(errno));
    return octet == '{' || octet == EOF;
}

void readScenario(PlaybackFile& file, const replay::RecordingOptions& options) {
    lines::LineReader reader({file.path});
    while (auto line = reader.next()) {
        auto* const advertise = std::get_if<lines::Advertise>(&line->action);
        if (advertise != nullptr && options.anyService) advertise->services.reset();
        append(file.input.lines, *std::move(line), file.path);
    }
}

void readCapture(PlaybackFile& file, const replay::RecordingOptions& options) {
    const auto reader = replay::openRecording(file.path);
    try {
        while (auto item = reader->next()) {
            if (auto* report = std::get_if<replay::RecordedReport>(&*item)) options.apply(*report);
            append(file.input.lines, lineOf(*std::move(item)), file.path);
        }
    } catch (const replay::RecordingDamage& damage) {
        file.damage = file.path + ": " + damage.what();
    }
}

}  // namespace

PlaybackFile readPlaybackFile(const std::string& argument, std::shared_ptr<const Settings> registry) {
    PlaybackFile file;
    try {
        const RadioString radio = RadioString::parse("replay:" + argument);
        if (radio.options.count("speed") != 0) throw UsageError(argument + ": speed has no meaning here");
        const auto options = replay::RecordingOptions::parse(radio);
        file.path = radio.argument;
        file.input.name = argument;
        file.input.registry = std::move(registry);
        if (isJSONLines(file.path)) {
            readScenario(file, options);
        } else {
            readCapture(file, options);
        }
    } catch (const std::exception& error) {
        throw UsageError(error.what());
    }
    return file;
}

}  // namespace nearcast::cli
