// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciKernel.h"

#include "platform/hci/HciPacket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace nearcast::hci {

namespace {

/// The kernel silently drops what does not fit. This holds about ten seconds of a busy air.
constexpr int receiveBufferOctets = 8 << 20;

class KernelHciSocket : public HciSocket {
public:
    explicit KernelHciSocket(int descriptor) : descriptor_(descriptor) {}
    ~KernelHciSocket() override { close(descriptor_); }
    KernelHciSocket(const KernelHciSocket&) = delete;
    KernelHciSocket& operator=(const KernelHciSocket&) = delete;

    Received read() override {
        const ssize_t octets = retried([&] { return recv(descriptor_, buffer_.data(), buffer_.size(), MSG_DONTWAIT); });
        if (octets > 0) return {std::span(buffer_).first(static_cast<std::size_t>(octets)), 0};
        if (octets == 0) return {{}, EPIPE};
        return {{}, errno == EAGAIN ? 0 : errno};
    }
    int write(std::span<const std::uint8_t> packet) override {
        const ssize_t sent =
            retried([&] { return send(descriptor_, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL); });
        return sent < 0 ? errno : 0;
    }
    [[nodiscard]] int descriptor() const override { return descriptor_; }

    /// With CAP_NET_ADMIN the kernel gives more than its usual limit.
    void raiseReceiveBuffer() const {
        const int octets = receiveBufferOctets;
        if (setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUFFORCE, &octets, sizeof octets) == 0) return;
        setsockopt(descriptor_, SOL_SOCKET, SO_RCVBUF, &octets, sizeof octets);
    }

    /// Lets LE Meta events through and nothing else.
    /// @return 0 or an `errno`. Without CAP_NET_RAW the kernel accepts the filter and silently removes from it what the
    ///         process may not hear; reading it back shows that
    [[nodiscard]] int filterReports() const {
        kernel::Filter wanted;
        wanted.types = 1U << eventPacket;
        wanted.events[leMetaEvent / 32] = 1U << leMetaEvent % 32;
        if (setsockopt(descriptor_, kernel::hciLevel, kernel::filterOption, &wanted, sizeof wanted) < 0) return errno;
        kernel::Filter given;
        socklen_t length = sizeof given;
        if (getsockopt(descriptor_, kernel::hciLevel, kernel::filterOption, &given, &length) < 0) return errno;
        return given.types == wanted.types && given.events[1] == wanted.events[1] ? 0 : EPERM;
    }

    [[nodiscard]] int bindTo(int index, std::uint16_t channel) const {
        kernel::Address address;
        address.device = static_cast<std::uint16_t>(index);
        address.channel = channel;
        return bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address) < 0 ? errno : 0;
    }

private:
    template <class Call>
    static ssize_t retried(Call call) {
        ssize_t result = 0;
        do {
            result = call();
        } while (result < 0 && errno == EINTR);
        return result;
    }

    int descriptor_;
    /// Larger than any event with its indicator, and than the largest data packet of a controller.
    std::array<std::uint8_t, 4096> buffer_{};
};

}  // namespace

HciPort::Opened KernelHciPort::open(int index, HciAccess access) {
    const int descriptor =
        socket(kernel::bluetoothFamily, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, kernel::hciProtocol);
    if (descriptor < 0) return {nullptr, errno};
    auto opened = std::make_unique<KernelHciSocket>(descriptor);
    int error = access == HciAccess::beside ? opened->filterReports() : 0;
    opened->raiseReceiveBuffer();
    if (error == 0) {
        error = opened->bindTo(index, access == HciAccess::beside ? kernel::rawChannel : kernel::userChannel);
    }
    if (error != 0) return {nullptr, error};
    return {std::move(opened), 0};
}

HciPort::Asked KernelHciPort::adapter(int index) {
    Asked asked;
    asked.adapter = hciAdapter(index, asked.error);
    return asked;
}

}  // namespace nearcast::hci
