// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace nearcast {

/// Owns a file descriptor.
class Descriptor {
public:
    /// @param value what a system call gave
    /// @param what  what was wanted, for the error
    /// @throws std::system_error when it is negative
    Descriptor(int value, const char* what);
    ~Descriptor();
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int get() const noexcept { return value_; }

private:
    int value_;
};

}  // namespace nearcast
