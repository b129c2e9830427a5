// SPDX-License-Identifier: Apache-2.0
// Any text as a radio string, with the options of the radio that it names.
#include "Expect.h"
#include "platform/hci/HciTarget.h"
#include "platform/radio/RadioString.h"
#include "platform/replay/ReplayPlatform.h"
#include "platform/simulator/SimulatorOptions.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace nearcast::fuzz {

namespace {

/// An argument as it is written, so that no question mark in it begins the options.
std::string escaped(std::string_view argument) {
    std::string text;
    for (const char character : argument) {
        if (character == '?' || character == '\\') text.push_back('\\');
        text.push_back(character);
    }
    return text;
}

/// The text that has these parts.
std::string joined(const RadioString& radio) {
    std::string text = radio.kind;
    if (!radio.argument.empty()) text += ":" + escaped(radio.argument);
    char before = '?';
    for (const auto& [name, value] : radio.options) {
        text.append(1, std::exchange(before, '&')).append(name);
        if (!value.empty()) text.append("=").append(value);
    }
    return text;
}

void checkSpeed(const std::optional<double>& speed) {
    expect(!speed || (std::isfinite(*speed) && *speed > 0), "time passes");
}

void checkOptions(const RadioString& radio) {
    if (radio.kind == "hci") {
        const hci::HciTarget target = hci::parseHciTarget(radio);
        expect(target.index >= 0 && target.index < 0xFFFF, "a controller has a number");
    } else if (radio.kind == "simulator") {
        checkSpeed(simulator::SimulatorOptions::from(radio).speed);
    } else if (radio.kind == "replay") {
        const auto options = replay::ReplayOptions::parse(radio);
        expect(!options.path.empty(), "a replay has a recording");
        checkSpeed(options.speed);
    }
}

void checkRadioString(std::string_view text) {
    try {
        const RadioString radio = RadioString::parse(text);
        const RadioString again = RadioString::parse(joined(radio));
        expect(radio.text == text, "the text is kept");
        expect(radio.kind == again.kind && radio.argument == again.argument && radio.options == again.options,
               "the parts are the whole");
        checkOptions(radio);
    } catch (const std::invalid_argument& problem) {
        // A message ends at its first zero.
        const std::string named = ("radio '" + std::string(text) + "': ").c_str();
        expect(std::string_view(problem.what()).starts_with(named), "the message names the radio");
    }
}

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkRadioString({reinterpret_cast<const char*>(data), size});
    return 0;
}
