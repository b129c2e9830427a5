// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <span>
#include <string>
#include <system_error>

namespace nearcast::fuzz {

/// An input as a file, for what reads files by their paths; it lies in memory alone.
class MemoryFile {
public:
    explicit MemoryFile(std::span<const std::uint8_t> bytes) : descriptor_(memfd_create("input", MFD_CLOEXEC)) {
        if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), "memfd_create");
        while (!bytes.empty()) {
            const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
            if (count <= 0) throw std::system_error(errno, std::generic_category(), "write");
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
    }
    ~MemoryFile() { close(descriptor_); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

}  // namespace nearcast::fuzz
