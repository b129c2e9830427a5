// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Words.h"
#include "watch/WatchView.h"

#include <sys/ioctl.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <vector>

namespace nearcast::cli {

namespace {

constexpr double silentFor = 30;  ///< seconds that a silent dongle stays in the table
constexpr int weakest = -100;     ///< dBm, an empty bar
constexpr int strongest = -40;    ///< dBm, a full bar
constexpr std::size_t barWidth = 20;

struct Row {
    std::string portName;
    QXDeviceType deviceType = QXDeviceTypeUnknown;
    std::int32_t RSSI = 0;
    double at = 0;  ///< of the last report, or of the silence
    bool silent = false;
};

struct Size {
    std::size_t rows = 24;
    std::size_t columns = 80;
};

Size terminalSize() {
    struct winsize size {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) return {};
    return {size.ws_row, size.ws_col};
}

std::string bar(std::int32_t RSSI) {
    const int level = std::clamp(RSSI, weakest, strongest) - weakest;
    const auto full = static_cast<std::size_t>(level) * barWidth / (strongest - weakest);
    return std::string(full, '#').append(barWidth - full, '.');
}

class TableView : public WatchView {
public:
    void report(const WatchReport& report) override {
        ++reports_;
        Row* const row = rowOf(report.MACAddr, !report.portName.empty());
        if (row == nullptr) return;
        *row = Row{std::string(report.portName), report.deviceType, report.RSSI, report.at, false};
    }

    void silent(double at, std::string_view portName, std::string_view MACAddr) override {
        Row* const row = rowOf(MACAddr, !portName.empty());
        if (row == nullptr) return;
        row->portName = portName;
        row->at = at;
        row->silent = true;
    }

    void console(std::string_view line) override {
        erase();
        complain("watch", line, exitGood);
    }

    void health(double /*at*/, const RadioHealth& /*health*/) override {}  // it is always shown below the table

    [[nodiscard]] bool showsTime() const override { return true; }

    void tick(double at, const RadioHealth& health) override {
        health_ = health;
        std::erase_if(rows_, [&](const auto& row) { return row.second.silent && at - row.second.at > silentFor; });
        erase();
        draw(at);
    }

    void end(const WatchSummary& summary) override {
        erase();
        draw(summary.seconds);
        writeOut(sentence(summary) + "\n");
        finishOut();
    }

private:
    using Entry = std::map<std::string, Row>::value_type;

    /// The row of a dongle; null for one that there is no room for.
    Row* rowOf(std::string_view MACAddr, bool registered) {
        const std::string address(MACAddr);
        const bool room = registered || rows_.size() < mostStrangers || rows_.count(address) != 0;
        return room ? &rows_[address] : nullptr;
    }

    /// Removes the last drawing, so that the next one, or a line, takes its place.
    void erase() {
        if (lines_ == 0) return;
        writeOut("\x1b[" + std::to_string(lines_) + "A\x1b[J");
        lines_ = 0;
    }

    void line(std::string_view text, std::size_t width) {
        writeOut(column(text, width));
        writeOut("\n");
        ++lines_;
    }

    /// Strongest first, the silent ones last.
    [[nodiscard]] std::vector<const Entry*> ordered() const {
        std::vector<const Entry*> entries;
        for (const Entry& entry : rows_) entries.push_back(&entry);
        std::stable_sort(entries.begin(), entries.end(), [](const Entry* left, const Entry* right) {
            if (left->second.silent != right->second.silent) return right->second.silent;
            return left->second.RSSI > right->second.RSSI;
        });
        return entries;
    }

    static std::string describe(const Entry& entry, double now) {
        const auto& [address, row] = entry;
        std::string text = column(row.portName.empty() ? "-" : row.portName, 18) + " " +
                           column(typeName(row.deviceType), 9) + column(address, 18);
        std::array<char, 64> values{};
        if (row.silent) return text + "silent";
        std::snprintf(values.data(), values.size(), "%4d dBm  %s %6.1f s", row.RSSI, bar(row.RSSI).c_str(),
                      std::max(0.0, now - row.at));
        return text + values.data();
    }

    /// The reason has a line of its own: a narrow terminal would cut it off.
    void drawHealth(double now, std::size_t width) {
        RadioHealth health = health_;
        health.why.clear();
        line("Radio " + healthInWords(health, now), width);
        if (!health_.why.empty()) line("      " + health_.why, width);
    }

    void draw(double now) {
        const Size size = terminalSize();
        const std::size_t width = size.columns - 1;
        const std::size_t room = size.rows > 7 ? size.rows - 7 : 1;
        line(column("PORT", 19) + column("TYPE", 9) + column("ADDRESS", 18) + column("  SIGNAL", 10) +
                 column("", barWidth + 4) + "AGE",
             width);
        const auto entries = ordered();
        for (std::size_t index = 0; index < entries.size() && index < room; ++index) {
            line(describe(*entries[index], now), width);
        }
        if (entries.size() > room) line("... and " + std::to_string(entries.size() - room) + " more", width);
        drawHealth(now, width);
        std::array<char, 80> foot{};
        std::snprintf(foot.data(), foot.size(), "%.1f s, %llu reports. Ctrl-C ends.", now,
                      static_cast<unsigned long long>(reports_));
        line(foot.data(), width);
        finishOut();
    }

    std::map<std::string, Row> rows_;
    RadioHealth health_;
    std::uint64_t reports_ = 0;
    std::size_t lines_ = 0;
};

}  // namespace

std::unique_ptr<WatchView> makeTableView() { return std::make_unique<TableView>(); }

}  // namespace nearcast::cli
