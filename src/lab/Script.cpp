// SPDX-License-Identifier: Apache-2.0
#include "lab/Script.h"

namespace nearcast::lab {

std::optional<lines::Time> Script::due() {
    if (failure_) return std::nullopt;
    const auto time = source_.peekTime();
    if (!time) return std::nullopt;
    return begin_ + *time;
}

void Script::happen() {
    try {
        const auto line = source_.next();
        if (!line) return;
        if (nesting_.full()) throw lines::InputError((source_.place() + ": ").append(Nesting::complaint));
        const Nesting::Inside inside(nesting_);
        perform_(line->action);
    } catch (const lines::InputError& error) {
        failure_ = error;
        if (failed_) failed_();
    }
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
