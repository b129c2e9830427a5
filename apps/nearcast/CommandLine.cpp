// SPDX-License-Identifier: Apache-2.0
#include "Command.h"

#include "support/Printable.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>

namespace nearcast::cli {

namespace {

constexpr const char* footer =
    "Radios (--radio):\n"
    "  auto                    the radio of this machine\n"
    "  bluez[:hciN]            the machine's Bluetooth service; an adapter of several\n"
    "  hci[:N]                 a controller of one's own; option beside: beside bluetoothd\n"
    "  simulator[:SCENE.json]  a simulated shop; options seed=N, speed=X or max\n"
    "  replay:FILE             a recording, - is standard input; options speed=X or max, as=dongles, services=any\n"
    "  none                    no radio\n"
    "Options follow a question mark: 'replay:shop.pcapng?speed=max&as=dongles'. One that belongs to a file's name is\n"
    "written \\?.\n"
    "\n"
    "Exit status: 0 done; 1 it could not be done, or only in part; 2 the command line or a file is wrong.";

/// Help is for standard output, and its reader; what is wrong, in several lines, for standard error.
int tellOf(const CLI::App& application, const CLI::ParseError& error) {
    std::ostringstream help;
    std::ostringstream problem;
    const bool good = application.exit(error, help, problem) == 0;
    writeOut(help.str());
    finishOut();
    std::istringstream lines(problem.str());
    for (std::string line; std::getline(lines, line);) std::fprintf(stderr, "%s\n", printable(line).c_str());
    return good ? exitGood : exitUsage;
}

/// @param command becomes the name of the command, as soon as it is known
int runChosen(int argc, char** argv, std::string& command) {
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
        return tellOf(application, error);
    }
    command = application.get_subcommands().front()->get_name();
    return chosen();
}

}  // namespace

int runCommandLine(int argc, char** argv) {
    std::string command;
    try {
        return runChosen(argc, argv, command);
    } catch (const std::invalid_argument& error) {
        return complain(command, error.what(), exitUsage);
    } catch (const std::bad_alloc&) {
        return complain(command, "there is not enough memory", exitFailed);
    } catch (const std::exception& error) {
        return complain(command, error.what(), exitFailed);
    }
}

}  // namespace nearcast::cli
