// SPDX-License-Identifier: Apache-2.0
#include "platform/files/ByteSource.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <array>
#include <atomic>
#include <cerrno>
#include <memory>
#include <system_error>

namespace nearcast {

namespace {

/// Readable once all inputs are to end. As long as the process; without a descriptor nobody is woken.
int endDescriptor() noexcept {
    static const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return descriptor;
}

std::atomic<bool>& ended() noexcept {
    static std::atomic<bool> flag{false};
    return flag;
}

bool isPipe(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISFIFO(status.st_mode);
}

/// A pipe that nobody has opened for writing yet is waited for where it is read, and not where it is opened.
int opened(const std::string& path) {
    if (path == "-") return STDIN_FILENO;
    return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | (isPipe(path) ? O_NONBLOCK : 0));
}

class Descriptor {
public:
    explicit Descriptor(const std::string& path) : name_(nameOfInput(path)), descriptor_(opened(path)) {
        if (descriptor_ < 0) fail();
        struct stat status {};
        waits_ = fstat(descriptor_, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
    }
    ~Descriptor() {
        if (descriptor_ != STDIN_FILENO) ::close(descriptor_);  // which is the process's
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] std::size_t read(std::span<std::uint8_t> room) const {
        while (true) {
            if (waits_ && !awaitBytes()) return 0;
            const ssize_t count = ::read(descriptor_, room.data(), room.size());
            if (count >= 0) return static_cast<std::size_t>(count);
            if (errno != EINTR && errno != EAGAIN) fail();
        }
    }

private:
    [[noreturn]] void fail() const { throw std::system_error(errno, std::generic_category(), name_); }

    /// @return false when the inputs are to end
    [[nodiscard]] bool awaitBytes() const {
        std::array<pollfd, 2> waiting{{{descriptor_, POLLIN, 0}, {endDescriptor(), POLLIN, 0}}};
        while (poll(waiting.data(), waiting.size(), -1) < 0) {
            if (errno != EINTR) fail();
        }
        return !inputsEnded();
    }

    const std::string name_;
    const int descriptor_;
    bool waits_ = false;
};

}  // namespace

std::string nameOfInput(const std::string& path) { return path == "-" ? "standard input" : path; }

ByteSource openInput(const std::string& path) {
    return [file = std::make_shared<const Descriptor>(path)](std::span<std::uint8_t> room) { return file->read(room); };
}

void endInputs() noexcept {
    ended().store(true);
    eventfd_write(endDescriptor(), 1);
}

bool inputsEnded() noexcept { return ended().load(); }

}  // namespace nearcast
