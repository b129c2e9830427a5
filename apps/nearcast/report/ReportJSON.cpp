// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"
#include "report/ReportData.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace nearcast::cli {

namespace {

/// Writes JSON from left to right and puts in the commas. Unlike a tree of the JSON library it keeps no second copy of
/// an hour of readings in memory.
class Writer {
public:
    Writer& open(char bracket) {
        separate();
        out_ += bracket;
        first_ = true;
        return *this;
    }
    Writer& close(char bracket) {
        out_ += bracket;
        first_ = false;
        return *this;
    }
    Writer& key(std::string_view name) {
        separate();
        appendQuoted(out_, name);
        out_ += ':';
        first_ = true;
        return *this;
    }
    Writer& text(std::string_view value) {
        separate();
        appendQuoted(out_, value);
        return *this;
    }
    Writer& plain(std::string_view value) {
        separate();
        out_ += value;
        return *this;
    }
    Writer& boolean(bool value) { return plain(value ? "true" : "false"); }
    Writer& integer(std::int64_t value) {
        std::array<char, 24> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        return plain({digits.data(), static_cast<std::size_t>(end - digits.data())});
    }
    Writer& number(double value) {
        std::array<char, 32> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        return std::isfinite(value) ? plain({digits.data(), static_cast<std::size_t>(end - digits.data())})
                                    : plain("null");
    }
    /// With one decimal.
    Writer& tenths(double value) { return number(std::round(value * 10) / 10); }
    Writer& differences(const std::vector<std::int64_t>& column) {
        open('[');
        std::int64_t before = 0;
        for (const std::int64_t value : column) {
            integer(value - before);
            before = value;
        }
        return close(']');
    }

    std::string take() { return std::move(out_); }

private:
    void separate() {
        if (!first_) out_ += ',';
        first_ = false;
    }

    std::string out_;
    bool first_ = true;
};

void write(Writer& out, const ReportCurve& curve) {
    out.open('{').key("t").differences(curve.at).key("v").differences(curve.value).close('}');
}

void write(Writer& out, const ReportDongle& dongle) {
    out.open('{').key("port").text(dongle.portName).key("nick").text(dongle.nickName);
    out.key("address").text(dongle.MACAddr).key("threshold").tenths(dongle.threshold);
    out.key("own").boolean(dongle.ownThreshold).key("raw");
    write(out, dongle.raw);
    out.key("smoothed");
    write(out, dongle.smoothed);
    out.key("level");
    write(out, dongle.level);
    out.key("silent").differences(dongle.silent).close('}');
}

void write(Writer& out, const ReportDecision& decision) {
    out.open('{').key("at").integer(decision.at).key("dongle").integer(decision.dongle);
    out.key("rule").text(nameOf(decision.rule)).key("signal").tenths(decision.signal);
    out.key("threshold").tenths(decision.threshold).key("runner").integer(decision.runnerUp);
    out.key("runnerSignal").tenths(decision.runnerUpSignal).key("distance");
    if (decision.distance) {
        out.tenths(*decision.distance);
    } else {
        out.plain("null");
    }
    out.key("stale").boolean(decision.stale).close('}');
}

void write(Writer& out, const ReportTruth& truth) {
    out.open('{').key("at").integer(truth.at).key("dongle").integer(truth.dongle).close('}');
}

void write(Writer& out, const ReportRadio& radio) {
    out.open('{').key("at").integer(radio.at).key("hears").boolean(radio.hears).key("state").text(radio.state);
    out.close('}');
}

void write(Writer& out, const ReportScan& scan) {
    out.open('{').key("at").integer(scan.at).key("what").text(scan.what).close('}');
}

template <class Item>
void write(Writer& out, const std::vector<Item>& items) {
    out.open('[');
    for (const Item& item : items) write(out, item);
    out.close(']');
}

void write(Writer& out, const NearestSettings& settings) {
    out.open('[');
    for (const NearestSetting& setting : nearestSettings()) {
        out.open('{').key("name").text(setting.name).key("value").number(settings.*setting.value);
        out.key("unit").text(setting.unit).close('}');
    }
    out.close(']');
}

}  // namespace

std::string JSONOf(const ReportData& data, const std::string& program) {
    Writer out;
    out.open('{').key("format").integer(1).key("program").text(program).key("title").text(data.title);
    out.key("sources").open('[');
    for (const std::string& source : data.sources) out.text(source);
    out.close(']').key("end").integer(data.end).key("settings");
    write(out, data.settings);
    out.key("dongles");
    write(out, data.dongles);
    out.key("decision");
    write(out, data.decisions);
    out.key("truth");
    if (data.truth) {
        write(out, *data.truth);
    } else {
        out.plain("null");
    }
    out.key("radio");
    write(out, data.radio);
    out.key("scans");
    write(out, data.scans);
    out.close('}');
    return out.take();
}

}  // namespace nearcast::cli
