// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/JSONText.h"
#include "common/Words.h"
#include "help/HelpText.h"
#include "machine/LinuxMachine.h"
#include "radios/RadioList.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

namespace nearcast::cli {

namespace {

constexpr std::size_t radioWidth = 25;  // of bluez:00:1A:7D:DA:71:13, and a gap
constexpr std::size_t opensWidth = 7;

struct RadiosArguments {
    bool json = false;
};

std::string inColumns(const std::vector<RadioEntry>& entries) {
    std::string text = column("RADIO", radioWidth) + column("OPENS", opensWidth) + "ABOUT\n";
    for (const RadioEntry& entry : entries) {
        text += column(entry.radio, radioWidth) + column(entry.opens ? "yes" : "no", opensWidth);
        text += printable(entry.about) + "\n";
        if (!entry.advice.empty()) {
            text += std::string(radioWidth + opensWidth, ' ') + "-> " + printable(entry.advice) + "\n";
        }
    }
    return text;
}

std::string asJSON(const std::vector<RadioEntry>& entries) {
    auto list = nlohmann::ordered_json::array();
    for (const RadioEntry& entry : entries) {
        list.push_back(
            {{"radio", entry.radio}, {"opens", entry.opens}, {"about", entry.about}, {"advice", entry.advice}});
    }
    return textOf(list) + "\n";
}

int radios(const RadiosArguments& arguments) {
    const LinuxMachine machine;
    const auto entries = radiosOf(machine);
    writeOut(arguments.json ? asJSON(entries) : inColumns(entries));
    finishOut();
    return exitGood;
}

}  // namespace

void addRadios(CLI::App& application, Action& chosen) {
    auto* command =
        application.add_subcommand("radios", "List the radios that can be opened here, and why others cannot");
    auto arguments = std::make_shared<RadiosArguments>();
    command->add_flag("--json", arguments->json, "Print a JSON array");
    setExamples(*command, {"nearcast radios", "nearcast radios --json"});
    command->callback([arguments, &chosen] { chosen = [arguments] { return radios(*arguments); }; });
}

}  // namespace nearcast::cli
