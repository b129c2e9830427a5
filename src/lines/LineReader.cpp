// SPDX-License-Identifier: Apache-2.0
#include "lines/LineReader.h"

#include <system_error>
#include <utility>

namespace nearcast::lines {

void LineReader::parse(std::string_view text) {
    try {
        line_ = parseLine(text, previous_);
        previous_ = line_->at;
    } catch (const LineError& problem) {
        previous_ = problem.at.value_or(previous_);
        problem_ = problem.inLine(text_.number());
        cut_ = !problem.at && !text_.ended();
        error_.emplace(problem.inFile(text_.name(), text_.number()));
    }
}

void LineReader::advance() {
    if (ahead_ || error_ || unreadable_) return;
    line_.reset();
    try {
        const auto text = text_.next();
        if (!text) return;
        parse(*text);
    } catch (const LineTooLong&) {
        const std::string tooLong = ": the line is longer than 16 MiB";
        problem_ = "line " + std::to_string(text_.number()) + tooLong;
        error_.emplace(place() + tooLong);
    } catch (const InputError& problem) {
        error_ = problem;
    } catch (const std::system_error&) {
        unreadable_ = std::current_exception();
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
    if (unreadable_) std::rethrow_exception(unreadable_);
    return std::exchange(line_, std::nullopt);
}

}  // namespace nearcast::lines
