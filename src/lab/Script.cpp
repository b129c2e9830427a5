// SPDX-License-Identifier: Apache-2.0
#include "lab/Script.h"

#include <string>

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
        if (depth_ == deepest) {
            throw lines::InputError(source_.place() + ": " + std::to_string(deepest) +
                                    " calls sleep inside one another already");
        }
        ++depth_;
        perform_(line->action);
        --depth_;
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
