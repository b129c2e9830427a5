// SPDX-License-Identifier: Apache-2.0
#include "lab/EventWriter.h"

#include "lines/Text.h"
#include "platform/json/JSONSerialization.h"
#include "support/Printable.h"

#include <array>
#include <charconv>
#include <cmath>

namespace nearcast::lab {

namespace {

constexpr std::size_t handOver = std::size_t{1} << 16;

lines::Time timeOf(double seconds) { return lines::Time(std::llround(seconds * 1e6)); }

}  // namespace

EventWriter& EventWriter::begin(lines::Time at, std::string_view event) {
    buffer_ += R"({"at": )";
    lines::appendSeconds(buffer_, at);
    return text("event", event);
}

EventWriter& EventWriter::name(std::string_view name) {
    buffer_ += ", \"";
    buffer_ += name;
    buffer_ += "\": ";
    return *this;
}

EventWriter& EventWriter::text(std::string_view name, std::string_view value) {
    appendQuoted(this->name(name).buffer_, value);
    return *this;
}

EventWriter& EventWriter::number(std::string_view name, std::int64_t value) {
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    this->name(name).buffer_.append(digits.data(), end);
    return *this;
}

EventWriter& EventWriter::boolean(std::string_view name, bool value) {
    this->name(name).buffer_ += value ? "true" : "false";
    return *this;
}

EventWriter& EventWriter::seconds(std::string_view name, std::optional<lines::Time> value) {
    this->name(name);
    if (value) {
        lines::appendSeconds(buffer_, *value);
    } else {
        buffer_ += "null";
    }
    return *this;
}

void EventWriter::end() {
    buffer_ += "}\n";
    if (buffer_.size() >= handOver) flush();
}

void EventWriter::flush() {
    if (!buffer_.empty() && !muted_) out_(buffer_);
    buffer_.clear();
}

void EventWriter::returned(lines::Time at, std::string_view of, bool value) {
    begin(at, "return").text("of", of).boolean("value", value).end();
}

void EventWriter::returned(lines::Time at, std::string_view of, std::int32_t value) {
    begin(at, "return").text("of", of).number("value", value).end();
}

void EventWriter::returned(lines::Time at, std::string_view of, const SettingValue& value) {
    begin(at, "return").text("of", of).name("value").buffer_ += printableJSON(JSONSerialization::compact(value));
    end();
}

void EventWriter::raised(lines::Time at, std::string_view of, std::string_view name, std::string_view reason) {
    begin(at, "raise").text("of", of).text("name", name).text("reason", reason).end();
}

EventWriter& EventWriter::beginDiscovered(lines::Time at, std::string_view portName, std::int32_t deviceType,
                                          std::string_view MACAddr, std::int32_t RSSI) {
    begin(at, "didDiscoverPort").text("portName", portName).number("deviceType", deviceType);
    return text("MACAddr", MACAddr).number("RSSI", RSSI);
}

void EventWriter::discovered(lines::Time at, std::string_view portName, std::int32_t deviceType,
                             std::string_view MACAddr, std::int32_t RSSI) {
    beginDiscovered(at, portName, deviceType, MACAddr, RSSI).end();
}

void EventWriter::discovered(lines::Time at, std::string_view portName, std::int32_t deviceType,
                             std::string_view MACAddr, std::int32_t RSSI, std::optional<lines::Time> age) {
    beginDiscovered(at, portName, deviceType, MACAddr, RSSI).seconds("age", age).end();
}

void EventWriter::radioHealth(lines::Time at, const RadioHealth& health) {
    begin(at, "radioHealth").number("state", health.state).text("why", health.why);
    number("restarts", static_cast<std::int64_t>(health.restarts));
    seconds("reportsPerSecond", timeOf(health.reportsPerSecond));
    std::optional<lines::Time> age;
    if (health.lastReportAge) age = timeOf(*health.lastReportAge);
    seconds("lastReportAge", age).end();
}

void EventWriter::summary(lines::Time at, std::uint64_t reports, std::uint64_t dongles, std::uint64_t silences) {
    begin(at, "summary").number("reports", static_cast<std::int64_t>(reports));
    number("dongles", static_cast<std::int64_t>(dongles)).number("silences", static_cast<std::int64_t>(silences)).end();
}

void EventWriter::fellSilent(lines::Time at, std::string_view portName, std::string_view MACAddr) {
    begin(at, "didUpdateState").text("portName", portName).text("MACAddr", MACAddr).end();
}

void EventWriter::console(lines::Time at, std::string_view text) { begin(at, "console").text("text", text).end(); }

void EventWriter::centralStopped(lines::Time at) { begin(at, "central").text("call", "stopScan").end(); }

void EventWriter::centralScans(lines::Time at, const std::optional<std::vector<std::string>>& services,
                               bool allowDuplicates) {
    begin(at, "central").text("call", "scanForPeripherals").name("services");
    if (services) {
        lines::appendList(buffer_, *services);
    } else {
        buffer_ += "null";
    }
    boolean("allowDuplicates", allowDuplicates).end();
}

void EventWriter::trace(lines::Time at, std::int32_t type, std::string_view method, std::string_view text) {
    begin(at, "trace").number("type", type).text("method", method).text("text", text).end();
}

void EventWriter::lock(lines::Time at, std::string_view name, bool held) {
    begin(at, "lock").text("name", name).boolean("held", held).end();
}

}  // namespace nearcast::lab
