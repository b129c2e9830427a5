// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "lab/controller/Air.h"
#include "lab/controller/Controller.h"
#include "lab/controller/Device.h"

#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lab {

/// The controller, the air around it and the hand that plugs it in and out, worked by lines of text. Each line is
/// answered by one: `ok`, `ok` and what was asked for, or `error` and why.
///
///     plug [legacy|extended|classic] [strict] [address=A]   as a new controller
///     unplug
///     dongle NAME SETTING...                         see readDongle
///     remove NAME | silence NAME | speak NAME       NAME may be * for the last two: all of them
///     mute on|off       the controller is dead: it answers nothing and reports nothing
///     deaf on|off       it obeys, but hears nothing
///     counters          as JSON
class Console {
public:
    /// @param device lives longer
    explicit Console(Device& device) : device_(device) {}

    /// @param line never throws for a bad one
    std::string obey(std::string_view line, Time now);
    /// A command of the host.
    void command(std::span<const std::uint8_t> packet);
    /// Puts on the air what is due.
    void advance(Time now);
    [[nodiscard]] std::optional<Time> next() const { return air_.next(); }

private:
    using Words = std::vector<std::string>;

    std::string carryOut(const Words& words, Time now);
    std::string plug(const Words& words);
    std::string counters() const;
    void send(const Bytes& event);

    Device& device_;
    Air air_;
    std::optional<Controller> controller_;
    bool mute_ = false;
    std::uint64_t commands_ = 0;
};

}  // namespace nearcast::lab
