// SPDX-License-Identifier: Apache-2.0
#include "lines/Truth.h"

#include "lines/Fields.h"
#include "lines/Line.h"
#include "lines/TextReader.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace nearcast::lines {

namespace {

constexpr std::size_t longestLine = std::size_t{1} << 16;
constexpr std::size_t mostMarks = 5'000'000;

TruthMark markOf(std::string_view text, std::size_t line) {
    Fields fields = Fields::parse(text);
    // Null is an answer here: next to none.
    if (!fields.has("truth")) throw LineError("field \"truth\" is missing");
    TruthMark mark;
    mark.line = line;
    const auto at = fields.seconds("at");
    if (!at) throw LineError("field \"at\" is missing");
    mark.at = *at;
    mark.MACAddr = fields.text("truth").value_or("");
    fields.number("distance");
    fields.text("second");
    fields.number("secondDistance");
    fields.requireNoMore();
    return mark;
}

void append(Truth& truth, TruthMark mark) {
    if (truth.size() == mostMarks) throw LineError("more than " + std::to_string(mostMarks) + " lines");
    if (!truth.empty() && mark.at < truth.back().at) throw LineError("field \"at\": earlier than in the line before");
    if (!truth.empty() && mark.at == truth.back().at) truth.pop_back();
    truth.push_back(std::move(mark));
}

}  // namespace

Truth changesOf(const Truth& truth) {
    Truth changes = truth;
    const auto same = [](const TruthMark& left, const TruthMark& right) { return left.MACAddr == right.MACAddr; };
    changes.erase(std::unique(changes.begin(), changes.end(), same), changes.end());
    return changes;
}

Truth readTruth(const std::string& path) {
    TextReader text(TextReader::openFiles({path}), longestLine);
    Truth truth;
    try {
        while (const auto line = text.next()) append(truth, markOf(*line, text.number()));
    } catch (const LineError& problem) {
        throw InputError(problem.inFile(text.name(), text.number()));
    } catch (const LineTooLong&) {
        throw InputError(path + ": a line is longer than 64 KiB");
    }
    if (truth.empty()) throw InputError(path + ": has no line");
    return truth;
}

}  // namespace nearcast::lines
