// SPDX-License-Identifier: Apache-2.0
#include "lines/LineReader.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace nearcast::lines {

namespace {

constexpr std::size_t chunk = std::size_t{1} << 16;

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

void LineReader::Closer::operator()(std::FILE* file) const noexcept {
    if (file != stdin) std::fclose(file);
}

LineReader::LineReader(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        std::FILE* file = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
        if (file == nullptr) throw ScenarioError(path + ": cannot be opened: " + std::strerror(errno));
        inputs_.push_back({path == "-" ? "standard input" : path, std::unique_ptr<std::FILE, Closer>(file)});
    }
}

std::string LineReader::place() const { return inputs_[current_].path + ":" + std::to_string(number_); }

/// Reads more of the current file. @return false at its end
bool LineReader::fill() {
    buffer_.erase(0, std::exchange(consumed_, 0));
    const std::size_t held = buffer_.size();
    buffer_.resize(held + chunk);
    std::FILE* file = inputs_[current_].file.get();
    const std::size_t got = std::fread(buffer_.data() + held, 1, chunk, file);
    buffer_.resize(held + got);
    if (got == 0 && std::ferror(file) != 0) {
        throw ScenarioError(inputs_[current_].path + ": cannot be read: " + std::strerror(errno));
    }
    return got != 0;
}

/// Cuts the next line of the current file off into `text_`. @return false at the file's end
bool LineReader::readText() {
    std::size_t searched = 0;
    std::size_t end = 0;
    while ((end = buffer_.find('\n', consumed_ + searched)) == std::string::npos) {
        searched = buffer_.size() - consumed_;
        if (searched > longestLine || !fill()) break;
    }
    const std::size_t length = std::min(end, buffer_.size()) - consumed_;
    if (end == std::string::npos && length == 0) return false;
    ++number_;
    if (length > longestLine) throw ScenarioError(place() + ": the line is longer than 16 MiB");
    text_.assign(buffer_, consumed_, length);
    consumed_ = std::min(consumed_ + length + 1, buffer_.size());
    return true;
}

void LineReader::parse() {
    try {
        line_ = parseLine(text_, previous_);
        previous_ = line_->at;
    } catch (const LineError& problem) {
        previous_ = problem.at.value_or(previous_);
        error_.emplace(place() + ": " + problem.what());
    }
}

void LineReader::advance() {
    if (ahead_ || error_) return;
    line_.reset();
    try {
        while (current_ < inputs_.size()) {
            if (!readText()) {
                inputs_[current_].file.reset();
                ++current_;
                number_ = 0;
                continue;
            }
            if (isBlank(text_)) continue;
            parse();
            ahead_ = true;
            return;
        }
    } catch (const ScenarioError& problem) {
        error_ = problem;
        ahead_ = true;
    }
}

std::optional<Time> LineReader::peekTime() {
    advance();
    if (!ahead_) return std::nullopt;
    return previous_;
}

std::optional<Line> LineReader::next() {
    advance();
    if (!std::exchange(ahead_, false)) return std::nullopt;
    if (error_) throw ScenarioError(*error_);
    return std::exchange(line_, std::nullopt);
}

}  // namespace nearcast::lines
