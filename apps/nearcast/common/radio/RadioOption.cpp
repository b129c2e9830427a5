// SPDX-License-Identifier: Apache-2.0
#include "common/radio/RadioOption.h"

#include "common/UsageError.h"
#include "help/Suggestion.h"
#include "platform/hci/HciTarget.h"
#include "platform/radio/AdapterName.h"
#include "platform/radio/RadioString.h"
#include "platform/replay/ReplayPlatform.h"
#include "platform/simulator/SceneReader.h"
#include "platform/simulator/SimulatorOptions.h"

#include <CLI/CLI.hpp>
#include <filesystem>
#include <stdexcept>
#include <string_view>

namespace nearcast::cli {

namespace {

/// Reads it as the back end will that it names.
void read(const std::string& text) {
    const RadioString radio = RadioString::parse(text);
    if (radio.kind == "replay") replay::ReplayOptions::parse(radio);
    if (radio.kind == "simulator") simulator::SimulatorOptions::from(radio);
    if (radio.kind == "hci") hci::parseHciTarget(radio);
}

bool isRadio(const std::string& word) {
    try {
        RadioString::parse(word);
        return true;
    } catch (const std::invalid_argument&) {
        return false;
    }
}

bool isScene(const std::string& path) {
    try {
        simulator::readSceneFile(path);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

void addRadioOption(CLI::App& command, std::string& radio) {
    command.add_option("--radio", radio, "The radio to listen with")->type_name("RADIO")->capture_default_str();
}

void requireRadio(const std::string& radio) {
    try {
        read(radio);
    } catch (const std::invalid_argument& error) {
        const std::string meant = radioMeantBy(radio);
        const bool itself = meant.empty() || meant == radio;  // then only its options are wrong
        throw UsageError(error.what() + (itself ? "" : "; did you mean '" + meant + "'?"));
    }
}

std::string radioMeantBy(const std::string& word) {
    if (isRadio(word)) return word;
    std::error_code none;
    if (std::filesystem::is_regular_file(word, none)) return (isScene(word) ? "simulator:" : "replay:") + word;
    if (namesAdapter(word)) return "bluez:" + word;
    const std::string kind = word.substr(0, word.find_first_of(":?"));
    const std::string meant = closestWord(kind, RadioString::kinds());
    return meant.empty() || meant == kind ? "" : meant + word.substr(kind.size());
}

}  // namespace nearcast::cli
