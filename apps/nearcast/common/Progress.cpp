// SPDX-License-Identifier: Apache-2.0
#include "common/Progress.h"

#include "common/Output.h"
#include "common/Words.h"
#include "platform/system/SystemClock.h"

#include <unistd.h>
#include <cstdlib>
#include <string_view>

namespace nearcast::cli {

namespace {

constexpr Progress::Time pause = std::chrono::milliseconds(250);

/// Whether standard error is a terminal on which a line can be drawn over.
bool canDraw() {
    // No other thread changes the environment.
    const char* const terminal = std::getenv("TERM");  // NOLINT(concurrency-mt-unsafe)
    return isatty(STDERR_FILENO) != 0 && terminal != nullptr && *terminal != '\0' &&
           std::string_view(terminal) != "dumb";
}

}  // namespace

std::string Tally::text() const {
    const double seconds = std::chrono::duration<double>(length).count();
    return counted(advertisements, "advertisement") + ", " + decimals(seconds) + " s";
}

Progress::Progress(bool wanted) {
    if (wanted && canDraw()) clock_ = SystemClock::now;
}

void Progress::show(const std::function<std::string()>& text) {
    if (!shown()) return;
    const Time now = clock_();
    if (last_ && now - *last_ < pause) return;
    last_ = now;
    drawLine(text());
}

void Progress::clear() {
    if (last_) wipeLine();
    last_.reset();
}

}  // namespace nearcast::cli
