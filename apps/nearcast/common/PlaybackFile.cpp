// SPDX-License-Identifier: Apache-2.0
#include "common/PlaybackFile.h"

#include "common/FileKind.h"
#include "common/UsageError.h"
#include "lines/LineReader.h"
#include "platform/replay/RecordingReader.h"
#include "platform/replay/RecordingWriter.h"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace nearcast::cli {

namespace {

// The whole file is held in memory.
constexpr std::size_t mostLines = 5'000'000;

using Lines = std::vector<lines::Line>;

void append(Lines& lines, lines::Line line, const std::string& path) {
    if (lines.size() == mostLines) {
        throw std::runtime_error(path + ": has more than " + std::to_string(mostLines) + " lines or reports");
    }
    lines.push_back(std::move(line));
}

/// Whether it begins like JSON Lines. A pcapng begins with line ends too, and then with a length that is no brace.
bool isJSONLines(const std::string& path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (file == nullptr) throw std::system_error(errno, std::generic_category(), path + ": cannot be opened");
    int octet = ' ';
    while (octet == ' ' || octet == '\t' || octet == '\r' || octet == '\n') octet = std::fgetc(file.get());
    if (std::ferror(file.get()) != 0)
        throw std::system_error(errno, std::generic_category(), path + ": cannot be read");
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

RadioString recordingNamed(const std::string& argument, const std::map<std::string, std::string>& more) {
    try {
        RadioString radio = RadioString::parse("replay:" + argument);
        if (radio.options.count("speed") != 0) throw UsageError(argument + ": speed has no meaning here");
        for (const auto& [name, value] : more) radio.options[name] = value;
        replay::RecordingOptions::parse(radio);
        return radio;
    } catch (const std::invalid_argument& error) {
        throw UsageError(error.what());
    }
}

PlaybackFile readPlaybackFile(const std::string& argument, std::shared_ptr<const Settings> registry) {
    const RadioString radio = recordingNamed(argument);
    const auto options = replay::RecordingOptions::parse(radio);
    PlaybackFile file;
    file.path = radio.argument;
    file.input.name = argument;
    file.input.registry = std::move(registry);
    try {
        if (isJSONLines(file.path)) {
            readScenario(file, options);
        } else {
            readCapture(file, options);
        }
    } catch (const lines::InputError& error) {
        throw lines::InputError(error.what() + whatItIs(file.path));
    }
    return file;
}

}  // namespace nearcast::cli
