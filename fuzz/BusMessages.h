// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SdMessage.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace nearcast::fuzz {

using Octets = std::vector<std::uint8_t>;

/// A signal as it goes over the bus (D-Bus Specification, "Message Format"): little-endian, its body as it is given.
class SignalOctets {
public:
    static Octets of(std::string_view signature, std::span<const std::uint8_t> body) {
        SignalOctets message;
        message.out_ = {'l', 4, 0, 1};  // a signal, no flags, version 1
        message.number(body.size());
        message.number(1);  // the serial
        message.number(0);  // the length of the fields, which is not known yet
        message.field(1, 'o', "/org/bluez/hci0");
        message.field(2, 's', "org.freedesktop.DBus.Properties");
        message.field(3, 's', "PropertiesChanged");
        message.field(8, 'g', signature);
        const std::size_t fields = message.out_.size() - fieldsBegin;
        for (std::size_t octet = 0; octet < 4; ++octet) {
            message.out_[fieldsBegin - 4 + octet] = static_cast<std::uint8_t>(fields >> 8 * octet);
        }
        message.align(8);
        message.out_.insert(message.out_.end(), body.begin(), body.end());
        return std::move(message.out_);
    }

private:
    static constexpr std::size_t fieldsBegin = 16;

    void align(std::size_t to) {
        while (out_.size() % to != 0) out_.push_back(0);
    }
    void number(std::size_t value) {
        for (int octet = 0; octet < 4; ++octet) out_.push_back(static_cast<std::uint8_t>(value >> 8 * octet));
    }
    void field(std::uint8_t code, char type, std::string_view text) {
        align(8);
        out_.insert(out_.end(), {code, 1, static_cast<std::uint8_t>(type), 0});
        if (type == 'g') {
            out_.push_back(static_cast<std::uint8_t>(text.size()));
        } else {
            number(text.size());
        }
        out_.insert(out_.end(), text.begin(), text.end());
        out_.push_back(0);
    }

    Octets out_;
};

/// A connection to a bus whose other end says what it is told to.
class SpokenBus {
public:
    explicit SpokenBus(std::span<const std::uint8_t> said) {
        constexpr std::string_view welcome = "DATA\r\nOK 0123456789abcdef0123456789abcdef\r\n";
        check(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends_.data()) < 0 ? -errno : 0);
        say({reinterpret_cast<const std::uint8_t*>(welcome.data()), welcome.size()});
        sd_bus* bus = nullptr;
        check(sd_bus_new(&bus));
        bus_.reset(bus);
        check(sd_bus_set_fd(bus, ends_[0], ends_[0]));
        check(sd_bus_negotiate_fds(bus, 0));
        check(sd_bus_start(bus));
        // A bus says nothing more before the greeting has been read.
        while (sd_bus_is_ready(bus) == 0) check(sd_bus_process(bus, nullptr));
        say(said);
    }
    ~SpokenBus() {
        bus_.reset();  // closes its own end
        close(ends_[1]);
    }
    SpokenBus(const SpokenBus&) = delete;
    SpokenBus& operator=(const SpokenBus&) = delete;

    /// The next message; null when there is none, or when the bus can make nothing of what was said.
    bluez::MessagePointer next() {
        constexpr int turns = 100;
        for (int turn = 0; turn < turns; ++turn) {
            sd_bus_message* message = nullptr;
            const int result = sd_bus_process(bus_.get(), &message);
            if (message != nullptr) return bluez::MessagePointer(message);
            if (result <= 0) return nullptr;
        }
        return nullptr;
    }

private:
    static void check(int result) {
        if (result < 0) throw std::system_error(-result, std::generic_category(), "bus");
    }
    void say(std::span<const std::uint8_t> octets) const {
        const ssize_t sent = send(ends_[1], octets.data(), octets.size(), MSG_NOSIGNAL);
        check(sent == static_cast<ssize_t>(octets.size()) ? 0 : -ENOBUFS);
    }

    std::array<int, 2> ends_{};
    bluez::BusPointer bus_;
};

}  // namespace nearcast::fuzz
