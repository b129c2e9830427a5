// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machine/BusReading.h"
#include "platform/hci/HciAdapters.h"

#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {

using hci::Capabilities;
using hci::HciAdapter;
using hci::HciAdapterList;

/// What `doctor` and `radios` may look at. Looking changes nothing. One thread.
class Machine {
public:
    virtual ~Machine() = default;
    /// The first part of a file, 64 KiB at most; nothing when it is not there or may not be read.
    [[nodiscard]] virtual std::optional<std::string> file(const std::string& path) const = 0;
    /// The names in a folder, in order; nothing when there is no such folder.
    [[nodiscard]] virtual std::optional<std::vector<std::string>> folder(const std::string& path) const = 0;
    /// What a program prints when it is asked for its version; nothing when it is not there.
    /// @param program an absolute path
    [[nodiscard]] virtual std::optional<std::string> versionOf(const std::string& program) const = 0;
    /// The controllers that the kernel has; read once, at the first call.
    [[nodiscard]] virtual const HciAdapterList& controllers() const = 0;
    /// What this process may do with them.
    [[nodiscard]] virtual Capabilities capabilities() const = 0;
    /// The path of this program.
    [[nodiscard]] virtual std::string program() const = 0;
    /// Read once, at the first call.
    [[nodiscard]] virtual const BusReading& bus() const = 0;
};

}  // namespace nearcast::cli
