// SPDX-License-Identifier: Apache-2.0
#include "fuzz/ManagerPlay.h"

#include <utility>

namespace nearcast::fuzz {

GivenLines::GivenLines(const std::vector<std::string>& texts) {
    lines::Time previous{0};
    for (const std::string& text : texts) {
        lines_.push_back(lines::parseLine(text, previous));
        previous = lines_.back().at;
    }
}

std::optional<lines::Line> GivenLines::next() {
    if (next_ == lines_.size()) return std::nullopt;
    return lines_[next_++];
}

std::optional<lines::Time> GivenLines::peekTime() {
    if (next_ == lines_.size()) return std::nullopt;
    return lines_[next_].at;
}

ManagerPlay::ManagerPlay() {
    manager_.init();
    observation_.follow(platform_.timeline());
}

std::string ManagerPlay::play(const std::vector<std::string>& lines) {
    GivenLines source(lines);
    lab::Script script(source, lines::Time{0}, [this](const lines::Action& action) { performer_.perform(action); });
    {
        const lab::Observation::Watch watch(observation_, true, true);
        script.run(platform_.timeline());
    }
    script.requireWhole();
    observation_.writer().requireWritten();
    observation_.writer().flush();
    return std::exchange(shown_, {});
}

}  // namespace nearcast::fuzz
