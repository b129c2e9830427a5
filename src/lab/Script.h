// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lines/LineReader.h"
#include "platform/timeline/Nesting.h"
#include "platform/timeline/Timeline.h"

#include <exception>
#include <functional>
#include <optional>

namespace nearcast::lab {

/// Lines as events on a timeline. A line performed while a call sleeps runs on the stack of that call, so lines may be
/// inside one another only up to a depth.
///
/// A line that cannot be read, or that would be too deep, ends the script; the calls in progress still end.
class Script : public TimelineSource {
public:
    using Perform = std::function<void(const lines::Action& action)>;

    /// @param source lives longer than the script
    /// @param begin  the timeline's time that is 0 in the lines
    /// @param failed is called when the script ends early; may be empty
    Script(lines::LineSource& source, lines::Time begin, Perform perform, std::function<void()> failed = {})
        : source_(source), begin_(begin), perform_(std::move(perform)), failed_(std::move(failed)) {}

    std::optional<lines::Time> due() override;
    void happen() override;

    /// Runs the script on a timeline from its next line to its end.
    void run(Timeline& timeline);
    /// Throws why it ended early, where it has.
    /// @throws lines::InputError, std::system_error as `LineSource::next`
    void requireWhole() const {
        if (failure_) std::rethrow_exception(failure_);
    }

private:
    std::optional<lines::Line> next();
    void fail();

    lines::LineSource& source_;
    const lines::Time begin_;
    const Perform perform_;
    const std::function<void()> failed_;
    Nesting nesting_;  ///< of the lines in progress
    std::exception_ptr failure_;
};

}  // namespace nearcast::lab
