// SPDX-License-Identifier: Apache-2.0
#include "common/files/PlaybackLines.h"

#include "platform/files/ByteSource.h"
#include "platform/replay/RecordingWriter.h"

#include <algorithm>
#include <span>
#include <system_error>
#include <utility>

namespace nearcast::cli {

namespace {

/// The source with what was tried in its messages.
ByteSource readFrom(ByteSource bytes, const std::string& name) {
    return [bytes = std::move(bytes), name](std::span<std::uint8_t> room) {
        try {
            return bytes(room);
        } catch (const std::system_error& error) {
            throw std::system_error(error.code(), name + ": cannot be read");
        }
    };
}

std::unique_ptr<replay::RecordingInput> openPlayback(const std::string& path) {
    const std::string name = nameOfInput(path);
    try {
        return std::make_unique<replay::RecordingInput>(unpacked(readFrom(openInput(path), name), name));
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(), name + ": cannot be opened");
    }
}

lines::TextReader::Source linesOf(replay::RecordingInput& input) {
    return [&input](std::span<std::uint8_t> room) {
        const auto bytes = input.takeSome(room.size());
        std::copy(bytes.begin(), bytes.end(), room.begin());
        return bytes.size();
    };
}

}  // namespace

PlaybackLines::PlaybackLines(const std::vector<std::string>& paths, replay::RecordingOptions options)
    : options_(options) {
    for (const std::string& path : paths) files_.push_back({nameOfInput(path), openPlayback(path)});
}

void PlaybackLines::open() {
    File& file = files_[current_];
    if (replay::holdsJSONLines(*file.input)) {
        std::vector<lines::TextReader::Input> inputs{{file.name, linesOf(*file.input)}};
        lines_ = std::make_unique<lines::LineReader>(std::move(inputs), time_);
    } else {
        recording_ = replay::openRecording(std::move(file.input), file.name);
    }
}

void PlaybackLines::close() {
    lines_.reset();
    recording_.reset();
    files_[current_].input.reset();
    ++current_;
}

std::string PlaybackLines::damageAt(std::uint64_t offset, const std::string& why) const {
    return files_[current_].name + ": " + replay::RecordingDamage(offset, why).what();
}

std::string PlaybackLines::errorAsDamage() const {
    if (!lines_ || lines_->problem().empty()) return "";
    const lines::TextReader& text = lines_->text();
    return damageAt(text.offset(), lines_->problem());
}

std::optional<lines::Line> PlaybackLines::readLine() {
    const auto& packing = files_[current_].input->damage();
    try {
        auto line = lines_->next();
        if (!line && packing) damage_ = damageAt(lines_->text().offset(), *packing);
        auto* const advertise = line ? std::get_if<lines::Advertise>(&line->action) : nullptr;
        if (advertise != nullptr && options_.anyService) advertise->services.reset();
        return line;
    } catch (const lines::InputError&) {
        if (!lines_->cut() || !packing) throw;
        damage_ = damageAt(lines_->text().offset(), *packing);
        return std::nullopt;
    }
}

std::optional<lines::Line> PlaybackLines::readReport() {
    try {
        auto item = recording_->next();
        if (!item) return std::nullopt;
        if (auto* report = std::get_if<replay::RecordedReport>(&*item)) options_.apply(*report);
        return replay::lineOf(*std::move(item));
    } catch (const replay::RecordingDamage& damage) {
        damage_ = files_[current_].name + ": " + damage.what();
        return std::nullopt;
    }
}

void PlaybackLines::advance() {
    while (!ahead_ && !error_ && !ended_ && damage_.empty() && current_ < files_.size()) {
        try {
            if (!lines_ && !recording_) open();
            ahead_ = lines_ ? readLine() : readReport();
            if (ahead_) {
                time_ = ahead_->at;
            } else if (damage_.empty()) {
                close();
            }
        } catch (const std::exception&) {
            error_ = std::current_exception();
            if (lines_) time_ = lines_->time();
        }
    }
}

std::optional<lines::Time> PlaybackLines::peekTime() {
    advance();
    if (!ahead_ && !error_) return std::nullopt;
    return time_;
}

std::optional<lines::Line> PlaybackLines::next() {
    advance();
    if (error_) {
        ended_ = true;
        std::rethrow_exception(std::exchange(error_, nullptr));
    }
    return std::exchange(ahead_, std::nullopt);
}

std::string PlaybackLines::place() const { return lines_ ? lines_->place() : files_[current_].name; }

}  // namespace nearcast::cli
