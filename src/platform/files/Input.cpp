// SPDX-License-Identifier: Apache-2.0
#include "platform/files/ByteSource.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>
#include <memory>
#include <system_error>

namespace nearcast {

namespace {

/// Standard input stays open: it is the process's.
class Descriptor {
public:
    explicit Descriptor(const std::string& path)
        : name_(nameOfInput(path)),
          descriptor_(path == "-" ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {
        if (descriptor_ < 0) fail();
    }
    ~Descriptor() {
        if (descriptor_ != STDIN_FILENO) ::close(descriptor_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] std::size_t read(std::span<std::uint8_t> room) const {
        while (true) {
            const ssize_t count = ::read(descriptor_, room.data(), room.size());
            if (count >= 0) return static_cast<std::size_t>(count);
            if (errno != EINTR) fail();
        }
    }

private:
    [[noreturn]] void fail() const { throw std::system_error(errno, std::generic_category(), name_); }

    const std::string name_;
    const int descriptor_;
};

}  // namespace

std::string nameOfInput(const std::string& path) { return path == "-" ? "standard input" : path; }

ByteSource openInput(const std::string& path) {
    return [file = std::make_shared<const Descriptor>(path)](std::span<std::uint8_t> room) { return file->read(room); };
}

}  // namespace nearcast
