// SPDX-License-Identifier: Apache-2.0
#include "evaluate/Recordings.h"

#include "common/PlaybackFile.h"
#include "lab/TruthFile.h"
#include "lines/LineReader.h"

#include <filesystem>
#include <stdexcept>

namespace nearcast::cli {

namespace {

/// The truth that was named, or that should lie beside the recording.
lab::Truth truthOf(JudgedRecording& recording, const std::string* named) {
    recording.truthPath = named != nullptr ? *named : truthPathFor(recording.path);
    if (named == nullptr && !std::filesystem::exists(recording.truthPath)) {
        throw std::invalid_argument(recording.path + ": where its user stood is not known: there is no " +
                                    recording.truthPath + "; name another file with --truth");
    }
    return lab::readTruth(recording.truthPath);
}

}  // namespace

std::string truthPathFor(const std::string& recordingPath) {
    return std::filesystem::path(recordingPath).replace_extension(".truth.jsonl").string();
}

std::vector<JudgedRecording> playAll(const std::vector<std::string>& recordings, const std::vector<std::string>& truths,
                                     const std::shared_ptr<const Settings>& registry) {
    if (!truths.empty() && truths.size() != recordings.size()) {
        throw std::invalid_argument(std::to_string(recordings.size()) + " recordings, but " +
                                    std::to_string(truths.size()) + " truth files: one for each is needed");
    }
    std::vector<JudgedRecording> played;
    for (std::size_t place = 0; place < recordings.size(); ++place) {
        PlaybackFile file = readPlaybackFile(recordings[place], registry);
        JudgedRecording recording;
        recording.path = file.path;
        recording.damage = file.damage;
        recording.truth = truthOf(recording, truths.empty() ? nullptr : &truths[place]);
        recording.playback = lab::play(file.input);
        lab::requireKnown(recording.truth, recording.playback, recording.truthPath);
        played.push_back(std::move(recording));
    }
    return played;
}

}  // namespace nearcast::cli
