// SPDX-License-Identifier: Apache-2.0
#include "Daemon.h"

#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>

namespace {

int serve(int argc, char** argv) {
    nearcast::bluezd::DaemonOptions options;
    bool absent = false;
    bool off = false;
    CLI::App application(
        "Stands in for bluetoothd on the bus at DBUS_SYSTEM_BUS_ADDRESS. Writes \"ready\" once it has "
        "the name org.bluez, takes commands on standard input, and ends with it.\n\n"
        "Commands: power on|off, plug, unplug, mute, unmute, silence ADDRESS, wake ADDRESS, "
        "fail METHOD ERROR (its next call), lose (the discovery), release CLIENT MONITOR, odd (signals that are not as "
        "they should be), count, quit.");
    application.add_option("--devices", options.devices, "How many devices advertise")->check(CLI::Range(0, 65535));
    application.add_option("--rate", options.rate, "Reports a second, all devices together")
        ->check(CLI::Range(0.0, 100000.0));
    application.add_flag("--flood", options.flood, "Reports as fast as the bus takes them, whatever the rate");
    application.add_flag("--absent", absent, "There is no adapter at first");
    application.add_flag("--off", off, "The adapter is off at first");
    application.add_flag("--nameless", options.nameless, "Signal all this without the name, as another program could");
    application.add_flag("--monitors", options.monitors, "Offer advertisement monitors");
    CLI11_PARSE(application, argc, argv);
    options.adapter = !absent;
    options.powered = !off;
    nearcast::bluezd::Daemon(options).run();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return serve(argc, argv);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "bluezd: %s\n", problem.what());
    } catch (...) {
        std::fputs("bluezd: an exception of an unknown kind\n", stderr);
    }
    return 1;
}
