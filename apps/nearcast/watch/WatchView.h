// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/QXBluetoothManager.h>
#include <nearcast/RadioHealth.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// A report of the manager, as `watch` shows it. The texts hold during the call.
struct WatchReport {
    double at = 0;  ///< seconds since the scan began
    std::string_view portName;
    QXDeviceType deviceType = QXDeviceTypeUnknown;
    std::string_view MACAddr;
    std::int32_t RSSI = 0;      ///< dBm
    std::optional<double> age;  ///< seconds since the dongle's report before this one
};

/// What a watch has seen.
struct WatchSummary {
    double seconds = 0;
    std::uint64_t reports = 0;
    std::uint64_t dongles = 0;  ///< different ones that were reported
    std::uint64_t silences = 0;
    bool moreDongles = false;  ///< there were others, too many to be remembered
};

/// Dongles that a watch remembers beside the registered ones: who is near may send any addresses, and ever new ones.
inline constexpr std::size_t mostStrangers = 10000;

/// How a watch is shown. One call at a time, from any thread.
class WatchView {
public:
    virtual ~WatchView() = default;
    virtual void report(const WatchReport& report) = 0;
    virtual void silent(double at, std::string_view portName, std::string_view MACAddr) = 0;
    /// A console line of the manager or of the radio.
    virtual void console(std::string_view line) = 0;
    /// The state of the radio, its reason or the number of its restarts has changed.
    /// @param health `since` counts as `at` does: from the begin of the watch
    virtual void health(double at, const RadioHealth& health) = 0;
    /// Whether it shows what changes with time alone; only then it gets ticks.
    [[nodiscard]] virtual bool showsTime() const { return false; }
    /// Time has passed; this is how the radio is now.
    virtual void tick(double /*at*/, const RadioHealth& /*health*/) {}
    /// Others have written to the terminal: what was drawn last is not there to be drawn over.
    virtual void disturbed() {}
    virtual void end(const WatchSummary& summary) = 0;
};

/// One line a report, for people and their tools.
std::unique_ptr<WatchView> makeLinesView();
/// JSON Lines; console lines and errors go to standard error.
std::unique_ptr<WatchView> makeJSONView();
/// A table that is drawn again and again, for a terminal.
std::unique_ptr<WatchView> makeTableView();

/// "printer", "portable", "drawer", or "-".
std::string_view typeName(QXDeviceType deviceType);
/// What is seen and sums up, in a sentence.
std::string sentence(const WatchSummary& summary);

}  // namespace nearcast::cli
