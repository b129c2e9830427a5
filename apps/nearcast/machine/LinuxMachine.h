// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "machine/Machine.h"

namespace nearcast::cli {

/// The machine that the program runs on.
class LinuxMachine : public Machine {
public:
    [[nodiscard]] std::optional<std::string> file(const std::string& path) const override;
    [[nodiscard]] std::optional<std::vector<std::string>> folder(const std::string& path) const override;
    [[nodiscard]] std::optional<std::string> versionOf(const std::string& program) const override;
    [[nodiscard]] const HciAdapterList& controllers() const override;
    [[nodiscard]] Capabilities capabilities() const override { return hci::ownCapabilities(); }
    [[nodiscard]] std::string program() const override { return hci::ownProgram(); }
    [[nodiscard]] const BusReading& bus() const override;

private:
    mutable std::optional<HciAdapterList> controllers_;
    mutable std::optional<BusReading> bus_;
};

}  // namespace nearcast::cli
