// SPDX-License-Identifier: Apache-2.0
#include "machine/BusReading.h"

#include "platform/bluez/Adapters.h"
#include "platform/bluez/Availability.h"
#include "platform/bluez/SdMessage.h"
#include "platform/radio/AdapterName.h"

#include <algorithm>
#include <chrono>
#include <string_view>

namespace nearcast::cli {

namespace {

constexpr std::uint64_t answerLimit = 5'000'000;  // microseconds

/// Collects the adapters among the objects that bluetoothd lists.
class AdapterCollector : public bluez::ObjectListener {
public:
    explicit AdapterCollector(std::vector<BusAdapter>& adapters) : adapters_(adapters) {}

    void adapterAdded(std::string_view path, const bluez::AdapterNews& news) override {
        BusAdapter& adapter = adapters_.emplace_back();
        adapter.name = bluez::adapterName(path);
        adapter.address = adapterAddress(news.address.value_or(""));
        adapter.powered = news.powered.value_or(false);
        adapter.discovering = news.discovering.value_or(false);
        adapter.central = news.central;
    }
    /// Told right after the adapter itself; one that is no adapter is left out.
    void monitorsOffered(std::string_view path) override {
        if (adapters_.empty() || adapters_.back().name != bluez::adapterName(path)) return;
        adapters_.back().advertisementMonitors = true;
    }
    void deviceListed(std::string_view /*path*/, const bluez::DeviceNews& /*news*/) override {}
    void deviceAdded(std::string_view /*path*/, const bluez::DeviceNews& /*news*/) override {}

private:
    std::vector<BusAdapter>& adapters_;
};

/// Asks bluetoothd for its objects, and does not have it started.
/// @return a negative errno where it does not answer
int askForObjects(sd_bus* bus, bluez::MessagePointer& answer, std::optional<BusProblem>& problem) {
    sd_bus_message* call = nullptr;
    int result = sd_bus_message_new_method_call(bus, &call, bluez::service, "/", bluez::interface::objectManager,
                                                "GetManagedObjects");
    const bluez::MessagePointer holder(call);
    if (result >= 0) result = sd_bus_message_set_auto_start(call, 0);
    sd_bus_error error{};
    sd_bus_message* received = nullptr;
    if (result >= 0) result = sd_bus_call(bus, call, answerLimit, &error, &received);
    answer.reset(received);
    problem = bluez::failureIn(&error);
    sd_bus_error_free(&error);
    return result;
}

BusProblem problemOf(int result) { return {"", bluez::failureOf(result).message}; }

void readObjects(sd_bus* bus, BusReading& reading) {
    bluez::MessagePointer answer;
    int result = askForObjects(bus, answer, reading.refused);
    AdapterCollector collector(reading.adapters);
    bluez::DeviceNews news;
    if (result >= 0) result = bluez::readObjects(answer.get(), news, collector);
    if (result < 0 && !reading.refused) reading.refused = problemOf(result);
    std::sort(reading.adapters.begin(), reading.adapters.end(),
              [](const auto& left, const auto& right) { return bluez::AdapterOrder()(left.name, right.name); });
}

std::optional<std::uint32_t> processOf(sd_bus_creds* credentials) {
    pid_t process = 0;
    if (sd_bus_creds_get_pid(credentials, &process) < 0 || process <= 0) return std::nullopt;
    return static_cast<std::uint32_t>(process);
}

}  // namespace

BusReading readBus() {
    BusReading reading;
    sd_bus* opened = nullptr;
    int result = sd_bus_open_system(&opened);
    const bluez::BusPointer bus(opened);
    if (result >= 0) result = bluez::awaitGreeting(opened, std::chrono::microseconds(answerLimit));
    if (result < 0) {
        reading.unreachable = problemOf(result);
        return reading;
    }
    sd_bus_set_method_call_timeout(bus.get(), answerLimit);
    sd_bus_creds* credentials = nullptr;
    const int owned = sd_bus_get_name_creds(bus.get(), bluez::service, SD_BUS_CREDS_PID, &credentials);
    reading.bluetoothd = owned >= 0;
    reading.available = reading.bluetoothd || bluez::isBluetoothdAvailable();
    if (reading.bluetoothd) {
        reading.process = processOf(credentials);
        sd_bus_creds_unref(credentials);
        readObjects(bus.get(), reading);
    } else if (owned != -ENXIO) {
        reading.unreachable = problemOf(owned);
    }
    return reading;
}

}  // namespace nearcast::cli
