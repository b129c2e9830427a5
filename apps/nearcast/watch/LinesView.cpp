// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Words.h"
#include "watch/WatchView.h"

#include <array>
#include <cstdio>

namespace nearcast::cli {

namespace {

constexpr std::size_t portWidth = 18;

std::string seconds(double value, int width, int decimals) {
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%*.*f", width, decimals, value);
    return text.data();
}

class LinesView : public WatchView {
public:
    void report(const WatchReport& report) override {
        std::string line = head(report.at, report.portName, report.MACAddr) + column(typeName(report.deviceType), 9);
        std::array<char, 24> signal{};
        std::snprintf(signal.data(), signal.size(), "%4d dBm", report.RSSI);
        line += signal.data();
        line += report.age ? "  age " + seconds(*report.age, 5, 2) + " s" : "  new";
        write(line);
    }

    void silent(double at, std::string_view portName, std::string_view MACAddr) override {
        write(head(at, portName, MACAddr) + "silent");
    }

    void health(double at, const RadioHealth& health) override {
        write(seconds(at, 9, 3) + " s  radio " + printable(healthInWords(health, at)));
    }

    void console(std::string_view line) override { complain("watch", line, exitGood); }

    void end(const WatchSummary& summary) override { write(sentence(summary)); }

private:
    static std::string head(double at, std::string_view portName, std::string_view MACAddr) {
        return seconds(at, 9, 3) + " s  " + column(portName.empty() ? "-" : portName, portWidth) + " " +
               column(MACAddr, 17) + "  ";
    }

    static void write(const std::string& line) {
        writeOut(line + "\n");
        finishOut();  // somebody may watch the output
    }
};

}  // namespace

std::unique_ptr<WatchView> makeLinesView() { return std::make_unique<LinesView>(); }

std::string_view typeName(QXDeviceType deviceType) {
    switch (deviceType) {
        case QXDeviceTypeDesktopPrinter: return "printer";
        case QXDeviceTypePortablePrinter: return "portable";
        case QXDeviceTypeTFTillfox: return "drawer";
        case QXDeviceTypeUnknown: break;
    }
    return "-";
}

std::string sentence(const WatchSummary& summary) {
    return counted(summary.reports, "report") + " of " + (summary.moreDongles ? "more than " : "") +
           counted(summary.dongles, "dongle") + " in " + seconds(summary.seconds, 0, 1) + " s; " +
           counted(summary.silences, "time") + " a dongle fell silent.";
}

}  // namespace nearcast::cli
