// SPDX-License-Identifier: Apache-2.0
#include "lines/LineReader.h"

#include <utility>

namespace nearcast::lines {

void LineReader::parse(std::string_view text) {
    try {
        line_ = parseLine(text, previous_);
        previous_ = line_->at;
    } catch (const LineError& problem) {
        previous_ = problem.at.value_or(previous_);
        error_.emplace(problem.inFile(text_.name(), text_.number()));
    }
}

void LineReader::advance() {
    if (ahead_ || error_) return;
    line_.reset();
    try {
        const auto text = text_.next();
        if (!text) return;
        parse(*text);
    } catch (const LineTooLong&) {
        error_.emplace(place() + ": the line is longer than 16 MiB");
    } catch (const InputError& problem) {
        error_ = problem;
    }
    ahead_ = true;
}

std::optional<Time> LineReader::peekTime() {
    advance();
    if (!ahead_) return std::nullopt;
    return previous_;
}

std::optional<Line> LineReader::next() {
    advance();
    if (!std::exchange(ahead_, false)) return std::nullopt;
    if (error_) throw InputError(*error_);
    return std::exchange(line_, std::nullopt);
}

}  // namespace nearcast::lines
