// SPDX-License-Identifier: Apache-2.0
#include "Command.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <string>
#include <system_error>

namespace nearcast::cli {

namespace {

constexpr const char* footer =
    "Radios (--radio):\n"
    "  auto                    the radio of this machine\n"
    "  bluez[:hciN]            the machine's Bluetooth service; an adapter of several\n"
    "  hci[:N]                 a controller of one's own; option beside: beside bluetoothd\n"
    "  simulator[:SCENE.json]  a simulated shop; options seed=N, speed=X or max\n"
    "  replay:FILE             a recording; options speed=X or max, as=dongles, services=any\n"
    "  none                    no radio\n"
    "Options follow a question mark: 'replay:shop.pcapng?speed=max&as=dongles'.\n"
    "\n"
    "Exit status: 0 done; 1 it could not be done, or only in part; 2 the command line or a file is wrong.";

int runChosen(int argc, char** argv) {
    CLI::App application("Tells which printer or cash drawer the user stands next to, by Bluetooth Low Energy.",
                         "nearcast");
    application.set_version_flag("--version", "nearcast " NEARCAST_VERSION);
    application.footer(footer);
    application.require_subcommand(1);
    Action chosen;
    addWatch(application, chosen);
    addRecord(application, chosen);
    addRun(application, chosen);
    addImport(application, chosen);
    addScene(application, chosen);
    addEvaluate(application, chosen);
    addReport(application, chosen);
    addRadios(application, chosen);
    addDoctor(application, chosen);
    try {
        application.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return application.exit(error) == 0 ? exitGood : exitUsage;
    }
    return chosen();
}

}  // namespace

int runCommandLine(int argc, char** argv) {
    try {
        return runChosen(argc, argv);
    } catch (const std::exception& error) {
        return complain("", error.what(), exitFailed);
    }
}

void writeOut(std::string_view text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) {
        throw std::system_error(errno, std::generic_category(), "standard output cannot be written");
    }
}

void finishOut() {
    if (std::fflush(stdout) != 0) {
        throw std::system_error(errno, std::generic_category(), "standard output cannot be written");
    }
}

int complain(std::string_view command, std::string_view problem, ExitStatus status) {
    std::fflush(stdout);
    const std::string line = "nearcast" + (command.empty() ? "" : " " + std::string(command)) + ": ";
    std::fprintf(stderr, "%s%.*s\n", line.c_str(), static_cast<int>(problem.size()), problem.data());
    return status;
}

}  // namespace nearcast::cli
