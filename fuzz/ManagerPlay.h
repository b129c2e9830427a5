// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "core/Manager.h"
#include "lab/EventWriter.h"
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
class ManagerPlay : public Console, public LockObserver, public VirtualRadioObserver {
public:
    /// Takes the trace and the locks of the process for itself, until it is gone.
    ManagerPlay();
    ~ManagerPlay() override;
    ManagerPlay(const ManagerPlay&) = delete;
    ManagerPlay& operator=(const ManagerPlay&) = delete;

    /// What the manager shows, one JSON object a line.
    std::string play(const std::vector<std::string>& lines);

    void NSLog(std::string_view line) noexcept override { writer_.console(now(), line); }
    void lockChanged(std::string_view name, bool held) noexcept override { writer_.lock(now(), name, held); }
    void stopAsked() override { writer_.centralStopped(now()); }
    void scanAsked(const std::optional<std::vector<CBUUID>>& services, ScanOptions options) override;

private:
    [[nodiscard]] lines::Time now() { return platform_.timeline().now(); }
    void perform(const lines::Action& action);

    // What a line does.
    void operator()(const lines::SharedManager& /*action*/) {}
    void operator()(const lines::End& /*action*/) {}
    void operator()(const lines::SetDelegate& action);
    void operator()(const lines::AddSetting& action);
    void operator()(const lines::RemoveSetting& action) { manager_.removeSettingWithPortName(action.portName); }
    void operator()(const lines::ReadSettings& action);
    void operator()(const lines::SetSettings& action) { manager_.setSettings(action.settings); }
    void operator()(const lines::SerializeSettings& action);
    void operator()(const lines::DeserializeSettings& action);
    void operator()(const lines::StartScan& action);
    void operator()(const lines::StopScan& /*action*/) { manager_.stopScan(); }
    void operator()(const lines::CalibrateActionArea& action);
    void operator()(const lines::GetRSSI& action);
    void operator()(const lines::RadioState& action) { platform_.radio()->setState(action.state); }
    void operator()(const lines::Advertise& action);

    std::string shown_;
    lab::EventWriter writer_{[this](std::string_view text) { shown_ += text; }};
    JSONSerialization JSON_;
    VirtualPlatform platform_{*this, JSON_, this};
    Manager manager_{this, platform_};
};

}  // namespace nearcast::fuzz
