// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/KernelMgmtPort.h"

#include <linux/filter.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace nearcast::bluez {

namespace {

// Numbers of the kernel's Bluetooth sockets (include/net/bluetooth/{bluetooth,hci_sock}.h of Linux).
constexpr unsigned long getDeviceInfo = _IOR('H', 211, int);  // HCIGETDEVINFO
// `struct hci_dev_info`, and in it `stat.evt_rx`.
constexpr std::size_t deviceInfoOctets = 92;
constexpr std::size_t eventsOffset = 64;
constexpr int bluetoothFamily = 31;          // AF_BLUETOOTH
constexpr int hciProtocol = 1;               // BTPROTO_HCI
constexpr std::uint16_t noDevice = 0xFFFF;   // HCI_DEV_NONE
constexpr std::uint16_t controlChannel = 3;  // HCI_CHANNEL_CONTROL

/// `struct sockaddr_hci`.
struct Address {
    std::uint16_t family = bluetoothFamily;
    std::uint16_t device = noDevice;
    std::uint16_t channel = controlChannel;
};

int bindTo(int descriptor) {
    const Address address;
    return bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0 ? errno : 0;
}

template <class Call>
ssize_t retried(Call call) {
    ssize_t result = 0;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

}  // namespace

int filterNews(int descriptor) noexcept {
    // By the codes of Command Complete, Command Status and Discovering. They are little-endian, and the filter's
    // machine reads big-endian.
    constexpr std::uint32_t all = 0xFFFF;
    sock_filter steps[] = {
        {BPF_LD | BPF_H | BPF_ABS, 0, 0, 0},
        {BPF_JMP | BPF_JEQ | BPF_K, 3, 0, 0x0100},
        {BPF_JMP | BPF_JEQ | BPF_K, 2, 0, 0x0200},
        {BPF_JMP | BPF_JEQ | BPF_K, 1, 0, 0x1300},
        {BPF_RET | BPF_K, 0, 0, 0},
        {BPF_RET | BPF_K, 0, 0, all},
    };
    const sock_fprog program = {static_cast<unsigned short>(std::size(steps)), steps};
    return setsockopt(descriptor, SOL_SOCKET, SO_ATTACH_FILTER, &program, sizeof program) < 0 ? errno : 0;
}

int KernelMgmtPort::open() {
    release();
    descriptor_ = socket(bluetoothFamily, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, hciProtocol);
    if (descriptor_ < 0) return errno;
    int error = filterNews(descriptor_);
    if (error == 0) error = bindTo(descriptor_);
    if (error != 0) release();
    return error;
}

void KernelMgmtPort::release() noexcept {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

int KernelMgmtPort::send(std::span<const std::uint8_t> command) {
    const ssize_t sent =
        retried([&] { return ::send(descriptor_, command.data(), command.size(), MSG_DONTWAIT | MSG_NOSIGNAL); });
    return sent < 0 ? errno : 0;
}

MgmtPort::Received KernelMgmtPort::receive() {
    const ssize_t octets = retried([&] { return recv(descriptor_, buffer_.data(), buffer_.size(), MSG_DONTWAIT); });
    if (octets > 0) return {std::span(buffer_).first(static_cast<std::size_t>(octets)), 0};
    if (octets == 0) return {{}, EPIPE};
    const int error = errno;
    if (error == ENOTSOCK) descriptor_ = -1;  // somebody closed ours, and its number is another file's by now
    return {{}, error == EAGAIN ? 0 : error};
}

std::optional<std::uint32_t> KernelMgmtPort::events(std::uint16_t adapter) const {
    const int asking = socket(bluetoothFamily, SOCK_RAW | SOCK_CLOEXEC, hciProtocol);
    if (asking < 0) return std::nullopt;
    alignas(4) std::array<std::uint8_t, deviceInfoOctets> info{};
    std::memcpy(info.data(), &adapter, sizeof adapter);
    const bool answered = ioctl(asking, getDeviceInfo, info.data()) == 0;
    ::close(asking);
    if (!answered) return std::nullopt;
    std::uint32_t count = 0;
    std::memcpy(&count, &info[eventsOffset], sizeof count);
    return count;
}

}  // namespace nearcast::bluez
