// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>
#include <nearcast/SettingRecord.h>

#include "scenario/Line.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::scenario {

/// Writes what the manager showed, one JSON object a line, in order.
class EventWriter {
public:
    using Out = std::function<void(std::string_view text)>;

    /// @param out takes whole lines, many at a time
    explicit EventWriter(Out out) : out_(std::move(out)) {}

    void returned(Time at, std::string_view of, bool value);
    void returned(Time at, std::string_view of, std::int32_t value);
    void returned(Time at, std::string_view of, const SettingValue& value);
    void raised(Time at, std::string_view of, std::string_view name, std::string_view reason);
    void discovered(Time at, std::string_view portName, std::int32_t deviceType, std::string_view MACAddr,
                    std::int32_t RSSI);
    /// As above, with the time since the dongle's report before it; nothing: it is the first.
    void discovered(Time at, std::string_view portName, std::int32_t deviceType, std::string_view MACAddr,
                    std::int32_t RSSI, std::optional<Time> age);
    void fellSilent(Time at, std::string_view portName, std::string_view MACAddr);
    void console(Time at, std::string_view text);
    void centralStopped(Time at);
    void centralScans(Time at, const std::optional<std::vector<std::string>>& services, bool allowDuplicates);
    void trace(Time at, std::int32_t type, std::string_view method, std::string_view text);
    void lock(Time at, std::string_view name, bool held);

    /// How the radio of a watch is, when that has changed.
    void radioHealth(Time at, const RadioHealth& health);
    /// What a watch has seen in all.
    void summary(Time at, std::uint64_t reports, std::uint64_t dongles, std::uint64_t silences);

    /// Hands everything over.
    void flush();
    /// Nothing more is written.
    void mute() { muted_ = true; }

private:
    EventWriter& beginDiscovered(Time at, std::string_view portName, std::int32_t deviceType, std::string_view MACAddr,
                                 std::int32_t RSSI);
    EventWriter& begin(Time at, std::string_view event);
    EventWriter& text(std::string_view name, std::string_view value);
    EventWriter& number(std::string_view name, std::int64_t value);
    EventWriter& seconds(std::string_view name, std::optional<Time> value);
    EventWriter& boolean(std::string_view name, bool value);
    EventWriter& name(std::string_view name);
    void end();

    Out out_;
    std::string buffer_;
    bool muted_ = false;
};

}  // namespace nearcast::scenario
