// SPDX-License-Identifier: Apache-2.0
#include "help/HelpText.h"

#include <CLI/CLI.hpp>

namespace nearcast::cli {

namespace {

constexpr std::string_view examplesHead = "Examples:\n";
constexpr std::string_view indent = "  ";

constexpr const char* radios =
    "Radios (--radio):\n"
    "  auto                    the radio of this machine\n"
    "  bluez[:ADDRESS]         the machine's Bluetooth service; an adapter (or hciN)\n"
    "  hci[:N]                 a controller of one's own; option beside: beside bluetoothd\n"
    "  simulator[:SCENE.json]  a simulated shop; options seed=N, speed=X or max\n"
    "  replay:FILE             a recording, - is standard input; options speed=X or max, as=dongles, services=any\n"
    "  none                    no radio\n"
    "Options follow a question mark: 'replay:shop.pcapng?speed=max&as=dongles'. One that belongs to a file's name is\n"
    "written \\?.\n"
    "\n";

constexpr const char* statuses =
    "\n"
    "'nearcast help COMMAND' tells what a command takes.\n"
    "\n"
    "Exit status:\n"
    "  0  done\n"
    "  1  could not be done: a radio, a file that cannot be read or written, a damaged recording\n"
    "  2  wrong use, or a scenario, scene, truth or settings file that says something wrong\n"
    "  3  done, and found wanting: see doctor";

}  // namespace

void setExamples(CLI::App& command, std::initializer_list<std::string_view> examples, std::string_view note) {
    std::string footer(note);
    if (!note.empty()) footer.append("\n\n");
    footer.append(examplesHead);
    for (const std::string_view example : examples) footer.append(indent).append(example).append("\n");
    footer.pop_back();
    command.footer(footer);
}

std::string firstExample(const CLI::App& command) {
    const std::string footer = command.get_footer();
    const auto head = footer.find(examplesHead);
    if (head == std::string::npos) return "";
    const auto begin = head + examplesHead.size() + indent.size();
    return footer.substr(begin, footer.find('\n', begin) - begin);
}

void completeHelp(CLI::App& program) {
    setExamples(program, {"nearcast watch --radio simulator", "nearcast doctor", "nearcast help watch"});
    program.footer(program.get_footer() + "\n" + statuses);
    program.get_formatter()->label("SUBCOMMAND", "COMMAND");
    program.get_help_ptr()->description("Print this help and exit");
    for (CLI::App* command : program.get_subcommands({})) {
        command->group("Commands");
        command->get_help_ptr()->description("Print this help and exit");
        if (command->get_option_no_throw("--radio") != nullptr) command->footer(radios + command->get_footer());
    }
}

std::string pointerToHelp(std::string_view command) {
    const std::string program = "nearcast";
    const std::string name = command.empty() ? program : program + " " + std::string(command);
    return "Try '" + name + " --help'.";
}

}  // namespace nearcast::cli
