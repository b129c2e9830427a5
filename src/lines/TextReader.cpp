// SPDX-License-Identifier: Apache-2.0
#include "lines/TextReader.h"

#include "platform/files/ByteSource.h"

#include <algorithm>
#include <iterator>
#include <system_error>
#include <utility>

namespace nearcast::lines {

namespace {

constexpr std::size_t chunk = std::size_t{1} << 16;

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r") == std::string_view::npos; }

ByteSource opened(const std::string& path, const std::string& name) {
    try {
        return unpacked(openInput(path), name);
    } catch (const std::system_error& error) {
        throw std::system_error(error.code(), name + ": cannot be opened");
    }
}

TextReader::Input openFile(const std::string& path) {
    std::string name = nameOfInput(path);
    auto source = [bytes = opened(path, name), name](std::span<std::uint8_t> room) {
        try {
            return bytes(room);
        } catch (const std::system_error& error) {
            throw std::system_error(error.code(), name + ": cannot be read");
        } catch (const PackedDamage& damage) {
            throw InputError(name + ": " + damage.what());
        } catch (const std::invalid_argument& problem) {  // which names it
            throw InputError(problem.what());
        }
    };
    return {std::move(name), std::move(source)};
}

}  // namespace

std::vector<TextReader::Input> TextReader::openFiles(const std::vector<std::string>& paths) {
    std::vector<Input> inputs;
    std::transform(paths.begin(), paths.end(), std::back_inserter(inputs), openFile);
    return inputs;
}

/// Reads more of the current input. @return false at its end
bool TextReader::fill() {
    buffer_.erase(0, std::exchange(consumed_, 0));
    const std::size_t held = buffer_.size();
    buffer_.resize(held + chunk);
    const std::span room(reinterpret_cast<std::uint8_t*>(buffer_.data()) + held, chunk);
    const std::size_t got = inputs_[current_].source(room);
    buffer_.resize(held + got);
    return got != 0;
}

/// The current input's next line, blank or not; nothing at its end.
std::optional<std::string_view> TextReader::nextInInput() {
    offset_ = position_;
    std::size_t searched = 0;
    std::size_t end = 0;
    while ((end = buffer_.find('\n', consumed_ + searched)) == std::string::npos) {
        searched = buffer_.size() - consumed_;
        if (searched > longest_ || !fill()) break;
    }
    const std::size_t length = std::min(end, buffer_.size()) - consumed_;
    if (end == std::string::npos && length == 0) return std::nullopt;
    ++number_;
    if (length > longest_) throw LineTooLong("the line is too long");
    const std::string_view text(buffer_.data() + consumed_, length);
    ended_ = end != std::string::npos;
    const std::size_t taken = ended_ ? length + 1 : length;
    consumed_ += taken;
    position_ += taken;
    return text;
}

std::optional<std::string_view> TextReader::next() {
    while (current_ < inputs_.size()) {
        const auto text = nextInInput();
        if (text && !isBlank(*text)) return text;
        if (text) continue;
        inputs_[current_].source = nullptr;  // closes its file
        ++current_;
        number_ = 0;
        position_ = 0;
    }
    return std::nullopt;
}

}  // namespace nearcast::lines
