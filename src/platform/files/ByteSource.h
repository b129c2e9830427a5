// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>

namespace nearcast {

/// Gives the next bytes of an input: fills the span from its begin, and returns how much; 0 at the end only.
/// @throws std::system_error
using ByteSource = std::function<std::size_t(std::span<std::uint8_t> room)>;

/// What an input is called in messages: its path, or "standard input" for "-".
std::string nameOfInput(const std::string& path);

/// Opens a file, a pipe or a device; "-" is standard input. The source gives what has come, and waits only where
/// nothing has: what somebody still writes can be followed.
/// @throws std::system_error naming the file; so does the source
ByteSource openInput(const std::string& path);

/// Ends all pipes and devices that are read, also where somebody waits for them, as if their writers had ended: a
/// program that is to end does not wait for what may never come. From any thread; for good.
void endInputs() noexcept;
/// Whether that was called.
bool inputsEnded() noexcept;

/// Packed bytes that break off, or that cannot be unpacked; says which, without the file's name.
class PackedDamage : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The bytes of a source, unpacked where they begin as gzip does: one member, or several in a row. It holds a few
/// kilobytes, whatever the bytes grow to.
///
/// The source throws `PackedDamage` once, after all that could be unpacked, and ends then. It throws
/// std::invalid_argument where what was packed is packed once more.
/// @param name of the input, for messages
ByteSource unpacked(ByteSource source, const std::string& name);

}  // namespace nearcast
