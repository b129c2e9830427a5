// SPDX-License-Identifier: Apache-2.0
#include "Daemon.h"

#include <poll.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <ctime>
#include <system_error>

namespace nearcast::bluezd {

namespace {

constexpr int floodTurn = 64;

Shop::Time now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

sd_bus* openBus() {
    sd_bus* bus = nullptr;
    check(sd_bus_open_system(&bus), "opening the bus");
    return bus;
}

}  // namespace

Daemon::Daemon(const DaemonOptions& options)
    : options_(options), shop_(options.devices, options.rate), bus_(openBus()) {
    adapter_.present = options.adapter;
    adapter_.powered = options.powered;
    check(sd_bus_add_filter(bus_.get(), nullptr, handle, this), "a filter");
    check(sd_bus_match_signal(bus_.get(), nullptr, "org.freedesktop.DBus", "/org/freedesktop/DBus",
                              "org.freedesktop.DBus", "NameOwnerChanged", clientGone, this),
          "a match");
    if (options_.nameless) {
        setDiscovering(true);
    } else {
        check(sd_bus_request_name(bus_.get(), "org.bluez", 0), "the name org.bluez");
    }
}

void Daemon::run() {
    std::puts("ready");
    std::fflush(stdout);
    while (!quit_) {
        while (check(sd_bus_process(bus_.get(), nullptr), "the bus") > 0) {
        }
        options_.flood ? flood() : advertise();
        if (!quit_) wait();
    }
    std::printf("sent %llu\n", static_cast<unsigned long long>(sent_));
}

void Daemon::advertise() {
    for (Shop::Time time = now(); shop_.running() && shop_.due() <= time;) {
        Device* device = shop_.next();
        if (device != nullptr && !mute_) report(*device);
    }
}

/// Until the socket is full, but not for long: commands and the clients get their turn.
void Daemon::flood() {
    if (mute_) return;
    for (int count = 0; count < floodTurn && shop_.running() && !blocked(); ++count) {
        Device* device = shop_.next();
        if (device != nullptr) report(*device);
    }
}

/// Whether the bus has not taken yet what it was given.
bool Daemon::blocked() const { return (check(sd_bus_get_events(bus_.get()), "the bus") & POLLOUT) != 0; }

void Daemon::report(Device& device) {
    ++sent_;
    if (!device.shown) {
        device.shown = true;
        signalInterfacesAdded(device.path.c_str(), &device);
        return;
    }
    sd_bus_message* raw = nullptr;
    check(sd_bus_message_new_signal(bus_.get(), &raw, device.path.c_str(), propertiesInterface, "PropertiesChanged"),
          "a signal");
    const Message message(raw);
    check(sd_bus_message_append(raw, "s", deviceInterface), "an interface");
    appendReport(raw, device);
    check(sd_bus_message_append(raw, "as", 0), "invalidated properties");
    send(raw);
}

void Daemon::wait() {
    const int events = check(sd_bus_get_events(bus_.get()), "the bus");
    std::uint64_t busDue = 0;
    check(sd_bus_get_timeout(bus_.get(), &busDue), "the bus");
    Shop::Time due = busDue == UINT64_MAX ? Shop::Time::max() : Shop::Time(std::chrono::microseconds(busDue));
    if (options_.flood) {
        if (shop_.running() && !mute_ && !blocked()) due = Shop::Time(0);
    } else if (shop_.running()) {
        due = std::min(due, shop_.due());
    }
    timespec room{};
    if (due != Shop::Time::max()) {
        const auto left = std::max(due - now(), Shop::Time(0));
        room.tv_sec = std::chrono::duration_cast<std::chrono::seconds>(left).count();
        room.tv_nsec = (left % std::chrono::seconds(1)).count();
    }
    pollfd watched[] = {{sd_bus_get_fd(bus_.get()), static_cast<short>(events), 0}, {STDIN_FILENO, POLLIN, 0}};
    const int ready = ppoll(watched, 2, due == Shop::Time::max() ? nullptr : &room, nullptr);
    if (ready < 0 && errno != EINTR) throw std::system_error(errno, std::generic_category(), "waiting");
    if (ready > 0 && watched[1].revents != 0 && !readCommands()) quit_ = true;
}

bool Daemon::readCommands() {
    char room[512];
    const ssize_t count = read(STDIN_FILENO, room, sizeof room);
    if (count <= 0) return false;
    input_.append(room, static_cast<std::size_t>(count));
    for (auto end = input_.find('\n'); end != std::string::npos; end = input_.find('\n')) {
        command(input_.substr(0, end));
        input_.erase(0, end + 1);
    }
    return true;
}

void Daemon::send(sd_bus_message* message) { check(sd_bus_send(bus_.get(), message, nullptr), "sending"); }

}  // namespace nearcast::bluezd
