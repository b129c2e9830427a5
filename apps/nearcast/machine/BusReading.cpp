// SPDX-License-Identifier: Apache-2.0
#include "machine/BusReading.h"

#include "platform/bluez/BluetoothdAtHand.h"

#include <systemd/sd-bus.h>
#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

namespace nearcast::cli {

namespace {

constexpr std::uint64_t patience = 5'000'000;  // microseconds
constexpr const char* daemonName = "org.bluez";

struct BusCloser {
    void operator()(sd_bus* bus) const noexcept { sd_bus_flush_close_unref(bus); }
};
struct MessageCloser {
    void operator()(sd_bus_message* message) const noexcept { sd_bus_message_unref(message); }
};
using Bus = std::unique_ptr<sd_bus, BusCloser>;
using Message = std::unique_ptr<sd_bus_message, MessageCloser>;

BusProblem problemOf(int result) { return {"", std::strerror(-result)}; }

BusProblem problemOf(const sd_bus_error& error, int result) {
    if (sd_bus_error_is_set(&error) == 0) return problemOf(result);
    return {error.name, error.message == nullptr ? "" : error.message};
}

/// Reads the message in the order in which it is; what does not fit ends the reading.
class Reader {
public:
    explicit Reader(sd_bus_message* message) : message_(message) {}

    std::string_view text(char type) {
        const char* value = nullptr;
        return sd_bus_message_read_basic(message_, type, &value) > 0 && value != nullptr ? value : "";
    }
    bool boolean() {
        int value = 0;
        return sd_bus_message_read_basic(message_, SD_BUS_TYPE_BOOLEAN, &value) > 0 && value != 0;
    }
    /// Calls `element` for each element of an array of this content.
    void each(const char* content, const std::function<void()>& element) {
        if (sd_bus_message_enter_container(message_, SD_BUS_TYPE_ARRAY, content) <= 0) return;
        while (sd_bus_message_at_end(message_, 0) == 0) element();
        sd_bus_message_exit_container(message_);
    }
    /// Calls `value` inside an entry's variant of this content; another content is passed over.
    void variant(const char* content, const std::function<void()>& value) {
        if (sd_bus_message_verify_type(message_, SD_BUS_TYPE_VARIANT, content) <= 0) {
            sd_bus_message_skip(message_, "v");
            return;
        }
        sd_bus_message_enter_container(message_, SD_BUS_TYPE_VARIANT, content);
        value();
        sd_bus_message_exit_container(message_);
    }
    void entry(const char* content, const std::function<void()>& inside) {
        if (sd_bus_message_enter_container(message_, SD_BUS_TYPE_DICT_ENTRY, content) <= 0) return;
        inside();
        sd_bus_message_exit_container(message_);
    }
    void skip(const char* content) { sd_bus_message_skip(message_, content); }

private:
    sd_bus_message* message_;
};

void readRoles(Reader& reader, BusAdapter& adapter) {
    reader.variant("as", [&] {
        adapter.central = false;
        reader.each("s", [&] {
            if (reader.text(SD_BUS_TYPE_STRING) == "central") adapter.central = true;
        });
    });
}

void readProperty(Reader& reader, BusAdapter& adapter) {
    const std::string_view property = reader.text(SD_BUS_TYPE_STRING);
    if (property == "Powered") {
        reader.variant("b", [&] { adapter.powered = reader.boolean(); });
    } else if (property == "Discovering") {
        reader.variant("b", [&] { adapter.discovering = reader.boolean(); });
    } else if (property == "Address") {
        reader.variant("s", [&] { adapter.address = reader.text(SD_BUS_TYPE_STRING); });
    } else if (property == "Roles") {
        readRoles(reader, adapter);
    } else {
        reader.skip("v");
    }
}

/// One object with its interfaces; only adapters are kept.
void readObject(Reader& reader, std::vector<BusAdapter>& adapters) {
    const std::string path(reader.text(SD_BUS_TYPE_OBJECT_PATH));
    BusAdapter adapter;
    adapter.name = path.substr(path.rfind('/') + 1);
    bool isAdapter = false;
    reader.each("{sa{sv}}", [&] {
        reader.entry("sa{sv}", [&] {
            const std::string_view interface = reader.text(SD_BUS_TYPE_STRING);
            if (interface == "org.bluez.AdvertisementMonitorManager1") adapter.advertisementMonitors = true;
            if (interface != "org.bluez.Adapter1") return reader.skip("a{sv}");
            isAdapter = true;
            reader.each("{sv}", [&] { reader.entry("sv", [&] { readProperty(reader, adapter); }); });
        });
    });
    if (isAdapter) adapters.push_back(std::move(adapter));
}

void readObjects(sd_bus* bus, BusReading& reading) {
    sd_bus_message* call = nullptr;
    sd_bus_message* answer = nullptr;
    int result = sd_bus_message_new_method_call(bus, &call, daemonName, "/", "org.freedesktop.DBus.ObjectManager",
                                                "GetManagedObjects");
    const Message callHolder(call);
    if (result >= 0) result = sd_bus_message_set_auto_start(call, 0);
    sd_bus_error error{};
    if (result >= 0) result = sd_bus_call(bus, call, patience, &error, &answer);
    const Message answerHolder(answer);
    if (result < 0) reading.refused = problemOf(error, result);
    sd_bus_error_free(&error);
    if (result < 0) return;
    Reader reader(answer);
    reader.each("{oa{sa{sv}}}", [&] { reader.entry("oa{sa{sv}}", [&] { readObject(reader, reading.adapters); }); });
    std::sort(reading.adapters.begin(), reading.adapters.end(),
              [](const BusAdapter& left, const BusAdapter& right) { return left.name < right.name; });
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
    const int result = sd_bus_open_system(&opened);
    const Bus bus(opened);
    if (result < 0) {
        reading.unreachable = problemOf(result);
        return reading;
    }
    sd_bus_set_method_call_timeout(bus.get(), patience);
    sd_bus_creds* credentials = nullptr;
    const int owned = sd_bus_get_name_creds(bus.get(), daemonName, SD_BUS_CREDS_PID, &credentials);
    reading.bluetoothd = owned >= 0;
    reading.atHand = reading.bluetoothd || bluez::isBluetoothdAtHand();
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
