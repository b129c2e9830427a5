// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/VhciDevice.h"

#include <array>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace nearcast::lab {

namespace {

// Packet indicators, as on a UART; 0xff is Linux's own, for the making of a controller and its answer.
constexpr std::uint8_t commandPacket = 0x01;
constexpr std::uint8_t eventPacket = 0x04;
constexpr std::uint8_t vendorPacket = 0xff;

[[noreturn]] void fail(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

}  // namespace

unsigned VhciDevice::plug() {
    unplug();
    descriptor_ = ::open("/dev/vhci", O_RDWR | O_CLOEXEC | O_NONBLOCK);
    if (descriptor_ < 0) fail("/dev/vhci");
    const std::array<std::uint8_t, 2> primary{vendorPacket, 0x00};
    if (::write(descriptor_, primary.data(), primary.size()) < 0) fail("making a controller");
    pollfd readable{descriptor_, POLLIN, 0};
    constexpr int longest = 5000;  // milliseconds
    std::array<std::uint8_t, 4> made{};
    if (::poll(&readable, 1, longest) != 1 || ::read(descriptor_, made.data(), made.size()) != ssize_t{made.size()} ||
        made[0] != vendorPacket) {
        fail("reading the number of the new controller");
    }
    return made[2] | static_cast<unsigned>(made[3]) << 8U;
}

void VhciDevice::unplug() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

void VhciDevice::send(std::span<const std::uint8_t> event) {
    if (!plugged()) return;
    const Bytes packet = Packet{eventPacket}.add(event).bytes();
    // The kernel takes a packet whole or, while the adapter is down, not at all.
    if (::write(descriptor_, packet.data(), packet.size()) < 0 && errno == EBADFD) unplug();
}

void VhciDevice::receive(const CommandSink& sink) {
    std::array<std::uint8_t, 2048> buffer{};
    for (;;) {
        const ssize_t got = plugged() ? ::read(descriptor_, buffer.data(), buffer.size()) : 0;
        if (got <= 0) return;
        const std::span packet(buffer.data(), static_cast<std::size_t>(got));
        if (packet[0] == commandPacket) sink(packet.subspan(1));
    }
}

}  // namespace nearcast::lab
