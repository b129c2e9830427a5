// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Words.h"
#include "watch/TableLayout.h"
#include "watch/WatchView.h"

#include <sys/ioctl.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::cli {

namespace {

constexpr double silentFor = 30;  ///< seconds that a silent dongle stays in the table

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
    friend bool operator==(const Size&, const Size&) = default;
};

Size terminalSize() {
    struct winsize size {};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0) return {};
    return {size.ws_row, size.ws_col};
}

/// Whether another job of the terminal is the one that the user sees. Where it is nobody's terminal, none is.
bool inBackground() {
    const pid_t foreground = tcgetpgrp(STDOUT_FILENO);
    return foreground > 0 && foreground != getpgrp();
}

/// Whether the process goes on after a stop, and who watches for that has not told yet.
bool goesOn() {
    sigset_t waiting;
    return sigpending(&waiting) == 0 && sigismember(&waiting, SIGCONT) == 1;
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
        writeOut(erasure());
        complain("watch", line, exitGood);
    }

    void health(double /*at*/, const RadioHealth& /*health*/) override {}  // it is always shown below the table

    [[nodiscard]] bool showsTime() const override { return true; }

    void tick(double at, const RadioHealth& health) override {
        health_ = health;
        std::erase_if(rows_, [&](const auto& row) { return row.second.silent && at - row.second.at > silentFor; });
        if (inBackground() || goesOn()) return disturbed();  // by the shell, which writes there
        draw(at);
        finishOut();
    }

    void disturbed() override { lines_ = 0; }

    void end(const WatchSummary& summary) override {
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

    /// What removes the last drawing, so that the next one, or a line, takes its place. In a terminal of another size
    /// it lies one does not know how, so that the whole screen is cleared.
    [[nodiscard]] std::string erasure() {
        const std::size_t lines = std::exchange(lines_, 0);
        if (lines == 0) return "";
        return terminalSize() == size_ ? "\x1b[" + std::to_string(lines) + "A\x1b[J" : "\x1b[H\x1b[J";
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

    [[nodiscard]] std::vector<std::string> dongles(double now, const TableLayout& layout, std::size_t room) const {
        std::vector<std::string> lines{layout.heading()};
        const auto entries = ordered();
        for (std::size_t index = 0; index < entries.size() && index < room; ++index) {
            const auto& [address, row] = *entries[index];
            const auto signal = row.silent ? std::nullopt : std::optional(row.RSSI);
            lines.push_back(layout.row({row.portName, row.deviceType, address, signal, now - row.at}));
        }
        if (entries.size() > room) lines.push_back("... and " + std::to_string(entries.size() - room) + " more");
        return lines;
    }

    /// The reason has a line of its own: a narrow terminal would cut it off.
    void addHealth(std::vector<std::string>& lines, double now) const {
        RadioHealth health = health_;
        health.why.clear();
        lines.push_back("Radio " + healthInWords(health, now));
        if (!health_.why.empty()) lines.push_back("      " + health_.why);
    }

    /// In one piece, so that nothing comes between its lines.
    void draw(double now) {
        std::string drawing = erasure();
        size_ = terminalSize();
        const std::size_t width = size_.columns - 1;
        const std::size_t room = size_.rows > 7 ? size_.rows - 7 : 1;
        auto lines = dongles(now, TableLayout(width), room);
        addHealth(lines, now);
        std::array<char, 80> foot{};
        std::snprintf(foot.data(), foot.size(), "%.1f s, %llu reports. Ctrl-C ends.", now,
                      static_cast<unsigned long long>(reports_));
        lines.emplace_back(foot.data());
        // What has scrolled out of the terminal cannot be drawn over.
        lines.resize(std::min(lines.size(), std::max<std::size_t>(size_.rows, 2) - 1));
        for (const std::string& line : lines) drawing += column(line, width) + "\n";
        lines_ = lines.size();
        writeOut(drawing);
    }

    std::map<std::string, Row> rows_;
    RadioHealth health_;
    std::uint64_t reports_ = 0;
    std::size_t lines_ = 0;  ///< of the last drawing, right above the cursor
    Size size_;              ///< of the terminal when they were drawn
};

}  // namespace

std::unique_ptr<WatchView> makeTableView() { return std::make_unique<TableView>(); }

}  // namespace nearcast::cli
