// SPDX-License-Identifier: Apache-2.0
#include "lab/TruthFile.h"

#include "platform/json/JSONSerialization.h"
#include "lines/Fields.h"
#include "lines/LineReader.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <string_view>
#include <vector>

namespace nearcast::lab {

namespace {

constexpr std::size_t longestLine = std::size_t{1} << 16;
constexpr std::size_t mostMarks = 5'000'000;
constexpr double latestSeconds = 9.0e9;  // as in a scenario

SettingValue::Dictionary objectOf(std::string_view text) {
    auto parsed = JSONSerialization::parse(text);
    if (const auto* problem = std::get_if<JSONProblem>(&parsed)) {
        throw lines::LineError("not JSON, at column " + std::to_string(problem->offset + 1) + ": " + problem->text);
    }
    const auto* members = std::get<SettingValue>(parsed).as<SettingValue::Dictionary>();
    if (members == nullptr) throw lines::LineError("not a JSON object");
    return *members;
}

lab::TruthMark markOf(std::string_view text, std::size_t line) {
    const SettingValue::Dictionary members = objectOf(text);
    // Null is an answer here, which the fields do not tell from no answer.
    if (members.find("truth") == members.end()) throw lines::LineError("field \"truth\" is missing");
    lines::Fields fields(members);
    lab::TruthMark mark;
    mark.line = line;
    const auto at = fields.number("at");
    if (!at) throw lines::LineError("field \"at\" is missing");
    if (std::abs(*at) > latestSeconds) throw lines::LineError("field \"at\": beyond 9000000000 seconds");
    mark.at = *at;
    mark.MACAddr = fields.text("truth").value_or("");
    fields.number("distance");
    fields.text("second");
    fields.number("secondDistance");
    fields.requireNoMore();
    return mark;
}

void append(lab::Truth& truth, lab::TruthMark mark) {
    if (truth.size() == mostMarks) throw lines::LineError("more than " + std::to_string(mostMarks) + " lines");
    if (!truth.empty() && mark.at < truth.back().at) throw lines::LineError("field \"at\": earlier than in the line before");
    if (!truth.empty() && mark.at == truth.back().at) truth.pop_back();
    truth.push_back(std::move(mark));
}

bool isBlank(std::string_view text) { return text.find_first_not_of(" \t\r") == std::string_view::npos; }

}  // namespace

lab::Truth readTruth(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw lines::ScenarioError(path + ": cannot be opened: " + std::strerror(errno));
    lab::Truth truth;
    std::vector<char> line(longestLine + 1);
    for (std::size_t number = 1; stream.getline(line.data(), static_cast<std::streamsize>(line.size())); ++number) {
        try {
            if (!isBlank(line.data())) append(truth, markOf(line.data(), number));
        } catch (const lines::LineError& problem) {
            throw lines::ScenarioError(path + ":" + std::to_string(number) + ": " + problem.what());
        }
    }
    if (stream.bad()) throw lines::ScenarioError(path + ": cannot be read");
    if (!stream.eof()) throw lines::ScenarioError(path + ": a line is longer than 64 KiB");
    if (truth.empty()) throw lines::ScenarioError(path + ": has no line");
    return truth;
}

void requireKnown(const lab::Truth& truth, const Playback& playback, const std::string& path) {
    for (const lab::TruthMark& mark : truth) {
        const bool known = mark.MACAddr.empty() ||
                           std::any_of(playback.dongles.begin(), playback.dongles.end(), [&](const auto& dongle) {
                               return !dongle.portName.empty() && dongle.MACAddr == mark.MACAddr;
                           });
        if (known) continue;
        throw lines::ScenarioError(path + ":" + std::to_string(mark.line) + ": \"" + mark.MACAddr +
                            "\" is the address of no device in " + playback.name);
    }
}

}  // namespace nearcast::lab
