// SPDX-License-Identifier: Apache-2.0
#include "lab/Script.h"

#include <system_error>

namespace nearcast::lab {

std::optional<lines::Time> Script::due() {
    if (failure_) return std::nullopt;
    const auto time = source_.peekTime();
    if (!time) return std::nullopt;
    return begin_ + *time;
}

void Script::fail() {
    failure_ = std::current_exception();
    if (failed_) failed_();
}

/// The next line that can be performed. What is wrong with it ends the script instead.
std::optional<lines::Line> Script::next() {
    try {
        auto line = source_.next();
        if (line && nesting_.full()) throw lines::InputError((source_.place() + ": ").append(Nesting::complaint));
        return line;
    } catch (const lines::InputError&) {
        fail();
    } catch (const std::system_error&) {
        fail();
    }
    return std::nullopt;
}

void Script::happen() {
    const auto line = next();
    if (!line) return;
    const Nesting::Inside inside(nesting_);
    perform_(line->action);
}

void Script::run(Timeline& timeline) {
    struct Source {
        Timeline& timeline;
        ~Source() { timeline.setSource(nullptr); }
    };
    timeline.setSource(this);
    const Source source{timeline};
    timeline.runToLastHappening();
}

}  // namespace nearcast::lab
