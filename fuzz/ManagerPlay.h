// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Manager.h"
#include "lab/Observation.h"
#include "lab/Performer.h"
#include "lab/Script.h"
#include "lines/LineReader.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::fuzz {

/// Lines that are given, as the source of a script.
class GivenLines : public lines::LineSource {
public:
    explicit GivenLines(const std::vector<std::string>& texts);

    std::optional<lines::Line> next() override;
    std::optional<lines::Time> peekTime() override;
    [[nodiscard]] std::string place() const override { return "line " + std::to_string(next_); }

private:
    std::vector<lines::Line> lines_;
    std::size_t next_ = 0;
};

/// Plays a scenario to a manager of its own, on a virtual platform, as `lab::run` does to the one manager of a process:
/// so one process can play many.
class ManagerPlay {
public:
    ManagerPlay();
    ManagerPlay(const ManagerPlay&) = delete;
    ManagerPlay& operator=(const ManagerPlay&) = delete;

    /// What the manager shows, with its trace and its locks, one JSON object a line.
    std::string play(const std::vector<std::string>& lines);

private:
    std::string shown_;
    lab::Observation observation_{[this](std::string_view text) { shown_ += text; }};
    JSONSerialization JSON_;
    VirtualPlatform platform_{observation_, JSON_, &observation_};
    Manager manager_{this, platform_};
    lab::PerformerOf<Manager> performer_{manager_, platform_, observation_.writer()};
};

}  // namespace nearcast::fuzz
