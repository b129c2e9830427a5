// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/RadioHealth.h>
#include <nearcast/SettingRecord.h>

#include "lines/Line.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lab {

/// Writes what the manager reported, one JSON object a line, in order.
class EventWriter {
public:
    using Out = std::function<void(std::string_view text)>;

    /// @param out receives whole lines, many at a time
    explicit EventWriter(Out out) : out_(std::move(out)) {}

    void returned(lines::Time at, std::string_view of, bool value);
    void returned(lines::Time at, std::string_view of, std::int32_t value);
    void returned(lines::Time at, std::string_view of, const SettingValue& value);
    void raised(lines::Time at, std::string_view of, std::string_view name, std::string_view reason);
    void discovered(lines::Time at, std::string_view portName, std::int32_t deviceType, std::string_view MACAddr,
                    std::int32_t RSSI);
    /// As above, with the time since the dongle's report before it; nothing: it is the first.
    void discovered(lines::Time at, std::string_view portName, std::int32_t deviceType, std::string_view MACAddr,
                    std::int32_t RSSI, std::optional<lines::Time> age);
    void fellSilent(lines::Time at, std::string_view portName, std::string_view MACAddr);
    void console(lines::Time at, std::string_view text);
    void centralStopped(lines::Time at);
    void centralScans(lines::Time at, const std::optional<std::vector<std::string>>& services, bool allowDuplicates);
    void trace(lines::Time at, std::int32_t type, std::string_view method, std::string_view text);
    void lock(lines::Time at, std::string_view name, bool held);

    /// The state of a watch's radio, after a change.
    void radioHealth(lines::Time at, const RadioHealth& health);
    /// The totals of a watch.
    void summary(lines::Time at, std::uint64_t reports, std::uint64_t dongles, std::uint64_t silences);

    /// Writes where nothing may be thrown, as in a callback. What is thrown is kept for `requireWritten`, the first of
    /// it, and nothing is written after it.
    template <class Write>
    void attempt(const Write& write) noexcept {
        try {
            write();
        } catch (...) {
            if (!failure_) failure_ = std::current_exception();
            mute();
        }
    }
    /// @throws what an attempt threw
    void requireWritten() const {
        if (failure_) std::rethrow_exception(failure_);
    }

    /// Passes everything to `out`.
    void flush();
    /// Drops everything from now on.
    void mute() { muted_ = true; }

private:
    EventWriter& beginDiscovered(lines::Time at, std::string_view portName, std::int32_t deviceType,
                                 std::string_view MACAddr, std::int32_t RSSI);
    EventWriter& begin(lines::Time at, std::string_view event);
    EventWriter& text(std::string_view name, std::string_view value);
    EventWriter& number(std::string_view name, std::int64_t value);
    EventWriter& seconds(std::string_view name, std::optional<lines::Time> value);
    EventWriter& boolean(std::string_view name, bool value);
    EventWriter& name(std::string_view name);
    void end();

    Out out_;
    std::string buffer_;
    bool muted_ = false;
    std::exception_ptr failure_;
};

}  // namespace nearcast::lab
