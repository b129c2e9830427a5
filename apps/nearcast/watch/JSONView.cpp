// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Words.h"
#include "lab/EventWriter.h"
#include "watch/WatchView.h"

#include <cmath>

namespace nearcast::cli {

namespace {

lines::Time timeOf(double seconds) { return lines::Time(std::llround(seconds * 1e6)); }

/// The events of `nearcast run`, and what only a watch knows beside them.
class JSONView : public WatchView {
public:
    void report(const WatchReport& report) override {
        std::optional<lines::Time> age;
        if (report.age) age = timeOf(*report.age);
        writer_.discovered(timeOf(report.at), report.portName, report.deviceType, report.MACAddr, report.RSSI, age);
        handOver();
    }

    void silent(double at, std::string_view portName, std::string_view MACAddr) override {
        writer_.fellSilent(timeOf(at), portName, MACAddr);
        handOver();
    }

    void health(double at, const RadioHealth& health) override {
        writer_.radioHealth(timeOf(at), health);
        handOver();
    }

    void console(std::string_view line) override { complain("watch", line, exitGood); }

    void end(const WatchSummary& summary) override {
        writer_.summary(timeOf(summary.seconds), summary.reports, summary.dongles, summary.silences);
        handOver();
    }

private:
    void handOver() {
        writer_.flush();
        finishOut();
    }

    lab::EventWriter writer_{writeOut};
};

}  // namespace

std::unique_ptr<WatchView> makeJSONView() { return std::make_unique<JSONView>(); }

}  // namespace nearcast::cli
