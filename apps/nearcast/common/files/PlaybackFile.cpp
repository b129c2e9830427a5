// SPDX-License-Identifier: Apache-2.0
#include "common/files/PlaybackFile.h"

#include "common/UsageError.h"
#include "common/files/FileKind.h"
#include "common/files/PlaybackLines.h"
#include "platform/files/ByteSource.h"
#include "platform/radio/RadioString.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace nearcast::cli {

namespace {

// The whole file is held in memory.
constexpr std::size_t mostLines = 5'000'000;

void append(PlaybackFile& file, lines::Line line) {
    auto& lines = file.input.lines;
    if (lines.size() == mostLines) {
        throw std::runtime_error(file.name + ": has more than " + std::to_string(mostLines) + " lines or reports");
    }
    if (std::holds_alternative<lines::Advertise>(line.action)) ++file.tally.advertisements;
    file.tally.length = std::max(file.tally.length, line.at);
    lines.push_back(std::move(line));
}

/// A line that is wrong is damage of a recording, or of what was cut. It is the mistake of who wrote a scenario, or
/// gave what is no recording at all: none of its lines can be read.
std::optional<lines::Line> nextOf(PlaybackLines& lines, PlaybackFile& file) {
    try {
        auto line = lines.next();
        if (!line) file.damage = lines.damage();
        return line;
    } catch (const lines::InputError&) {
        file.damage = lines.errorAsDamage();
        const auto& before = file.input.lines;
        const bool usable = !before.empty() && (lines.cut() || !lab::isScenario(before));
        if (file.damage.empty() || !usable) throw;
        return std::nullopt;
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

PlaybackFile readPlaybackFile(const std::string& argument, std::shared_ptr<const Settings> registry,
                              Progress* progress) {
    const RadioString radio = recordingNamed(argument);
    PlaybackFile file;
    file.path = radio.argument;
    file.name = nameOfInput(file.path);
    file.input.name = file.path == "-" ? file.name : argument;
    file.input.registry = std::move(registry);
    PlaybackLines lines({file.path}, replay::RecordingOptions::parse(radio));
    try {
        while (auto line = nextOf(lines, file)) {
            append(file, *std::move(line));
            if (progress != nullptr) progress->show([&] { return "reading " + file.name + ": " + file.tally.text(); });
        }
    } catch (const lines::InputError& error) {
        throw lines::InputError(error.what() + whatItIs(file.path));
    }
    return file;
}

}  // namespace nearcast::cli
