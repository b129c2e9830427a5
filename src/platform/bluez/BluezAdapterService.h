// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/bluez/SdMessage.h"
#include "platform/radio/AdapterService.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace nearcast::bluez {

/// Where bluetoothd has its configuration.
inline constexpr const char* configurationFile = "/etc/bluetooth/main.conf";

/// Whether bluetoothd switches on each adapter that it gets: `AutoEnable` below `[Policy]`, which counts as set where
/// nothing is said.
/// @param configuration the text of its configuration
bool isAutoEnable(std::string_view configuration);

/// bluetoothd, over the system bus. Each operation makes a connection of its own, for there is one in hours.
class BluezAdapterService : public AdapterService {
public:
    /// How long is waited for an adapter that was given back.
    struct Patience {
        std::chrono::milliseconds step{50};  ///< between two looks
        int looksForIt = 100;                ///< until bluetoothd shows it again
        int looksForPower = 60;              ///< until it is on, once it is shown
        /// Waits a step.
        std::function<void(std::chrono::milliseconds step)> pause;
    };

    BluezAdapterService();
    /// @param configuration a file; one that cannot be read says nothing
    BluezAdapterService(std::string configuration, Patience patience)
        : configuration_(std::move(configuration)), patience_(std::move(patience)) {}

    bool turnsOn(const std::string& adapter) override;
    bool turnOff(const std::string& adapter) override;
    void leaveOff(const std::string& adapter) override;

private:
    const std::string configuration_;
    const Patience patience_;
};

}  // namespace nearcast::bluez
