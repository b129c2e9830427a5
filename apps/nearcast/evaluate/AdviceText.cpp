// SPDX-License-Identifier: Apache-2.0
#include "common/Words.h"
#include "evaluate/Advice.h"
#include "evaluate/JSONFigures.h"
#include "evaluate/Table.h"

namespace nearcast::cli {

namespace {

std::string decibels(std::optional<std::int32_t> value) { return value ? std::to_string(*value) : std::string("-"); }

/// What a person has to know of it; empty where the table says all.
std::string remark(const DeviceAdvice& one) {
    const lab::ThresholdAdvice& advice = one.advice;
    if (advice.inseparable()) {
        const std::string other = one.mistakenAt.empty() ? "the rest" : printable(one.mistakenAt);
        return "cannot be told apart from " + other + ": " + percent(advice.errorThere()) + " % error";
    }
    if (advice.threshold) return "";
    if (advice.stays == 0) return "no threshold: the user did not stand at it for long enough";
    if (!advice.elsewhere) return "no threshold: the user stood nowhere else for long enough";
    return "no threshold: it was not heard while the user stood anywhere";
}

JSON asJSON(const DeviceAdvice& one) {
    const lab::ThresholdAdvice& advice = one.advice;
    JSON result = {{"portName", one.portName}, {"MACAddr", advice.MACAddr}};
    result["present"] = one.present ? JSON(*one.present) : JSON();
    result["threshold"] = advice.threshold ? JSON(*advice.threshold) : JSON();
    result["stays"] = advice.stays;
    if (advice.threshold) {
        result["validatedBy"] = advice.byHalves ? "halves" : "stays";
        result["missedPercent"] = percentJSON(advice.missed);
        result["intrudingPercent"] = percentJSON(advice.intruding);
        result["errorPercent"] = percentJSON(advice.error());
        result["mistakenAt"] = one.mistakenAt.empty() ? JSON() : JSON(one.mistakenAt);
        result["errorTherePercent"] = percentJSON(advice.errorThere());
        result["inseparable"] = advice.inseparable();
    }
    return result;
}

}  // namespace

std::string textOf(const std::vector<DeviceAdvice>& advice) {
    Table table(
        {"device", "present dBm", "threshold dBm", "outside at it %", "inside elsewhere %", "error %", "stays"});
    std::string remarks;
    for (const DeviceAdvice& one : advice) {
        const bool found = one.advice.threshold.has_value();
        const auto shown = [found](double share) { return found ? percent(share) : std::string("-"); };
        table.add({printable(one.portName), decibels(one.present), decibels(one.advice.threshold),
                   shown(one.advice.missed), shown(one.advice.intruding), shown(one.advice.error()),
                   std::to_string(one.advice.stays)});
        if (const std::string text = remark(one); !text.empty())
            remarks += printable(one.portName) + ": " + text + "\n";
    }
    return table.text() + (remarks.empty() ? "" : "\n" + remarks);
}

std::string JSONOf(const std::vector<DeviceAdvice>& advice, const NearestSettings& settings) {
    JSON result = {{"settings", settingsJSON(settings)}, {"devices", JSON::array()}};
    for (const DeviceAdvice& one : advice) result["devices"].push_back(asJSON(one));
    return result.dump(-1, ' ', false, JSON::error_handler_t::replace) + "\n";
}

}  // namespace nearcast::cli
