// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/SdMessage.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace nearcast::bluez {

namespace {

/// Leaves a container, unless what was read in it has failed.
/// @param result of what was read
int leave(sd_bus_message* message, int result) {
    return failed(result) ? result : sd_bus_message_exit_container(message);
}

/// Calls `read` for each element of an array of dictionary entries; it reads the entry.
/// @param array, entry the types, as "{sv}" and "sv"
template <class Read>
int readEntries(sd_bus_message* message, const char* array, const char* entry, Read&& read) {
    int result = sd_bus_message_enter_container(message, 'a', array);
    if (failed(result)) return result;
    while ((result = sd_bus_message_enter_container(message, 'e', entry)) > 0) {
        result = leave(message, read());
        if (failed(result)) return result;
    }
    return leave(message, result);
}

/// Calls `read` inside a variant that holds `contents`; one that holds something else is skipped.
template <class Read>
int readVariant(sd_bus_message* message, const char* contents, Read&& read) {
    const int result = sd_bus_message_enter_container(message, 'v', contents);
    if (result == -ENXIO) return sd_bus_message_skip(message, "v");
    return failed(result) ? result : leave(message, read());
}

int readBoolean(sd_bus_message* message, std::optional<bool>& value) {
    return readVariant(message, "b", [&] {
        int number = 0;
        const int result = sd_bus_message_read_basic(message, 'b', &number);
        if (!failed(result)) value = number != 0;
        return result;
    });
}

template <class Take>
int readText(sd_bus_message* message, Take&& take) {
    return readVariant(message, "s", [&] {
        const char* text = nullptr;
        const int result = sd_bus_message_read_basic(message, 's', &text);
        if (!failed(result)) take(std::string_view(text));
        return result;
    });
}

int readRSSI(sd_bus_message* message, DeviceNews& news) {
    return readVariant(message, "n", [&] {
        std::int16_t value = 0;
        const int result = sd_bus_message_read_basic(message, 'n', &value);
        if (!failed(result)) news.RSSI = value;
        return result;
    });
}

int readManufacturer(sd_bus_message* message, DeviceNews& news) {
    std::uint16_t company = 0;
    const int result = sd_bus_message_read_basic(message, 'q', &company);
    if (failed(result)) return result;
    return readVariant(message, "ay", [&] {
        const void* octets = nullptr;
        std::size_t size = 0;
        const int read = sd_bus_message_read_array(message, 'y', &octets, &size);
        if (!failed(read)) news.offer({company, {static_cast<const std::uint8_t*>(octets), size}});
        return read;
    });
}

int readManufacturers(sd_bus_message* message, DeviceNews& news) {
    return readVariant(message, "a{qv}", [&] {
        return readEntries(message, "{qv}", "qv", [&] { return readManufacturer(message, news); });
    });
}

/// Calls `take` for each text of an `as`.
template <class Take>
int readTexts(sd_bus_message* message, Take&& take) {
    int result = sd_bus_message_enter_container(message, 'a', "s");
    const char* text = nullptr;
    while (!failed(result) && (result = sd_bus_message_read_basic(message, 's', &text)) > 0) {
        take(std::string_view(text));
    }
    return leave(message, result);
}

int readServices(sd_bus_message* message, DeviceNews& news) {
    return readVariant(message, "as", [&] {
        news.hasServices = true;
        return readTexts(message, [&](std::string_view text) { news.services.push_back(text); });
    });
}

int readRoles(sd_bus_message* message, AdapterNews& news) {
    return readVariant(message, "as", [&] {
        news.central = false;
        return readTexts(message, [&](std::string_view role) { news.central = *news.central || role == "central"; });
    });
}

PowerState powerStateOf(std::string_view text) {
    if (text == "on") return PowerState::on;
    if (text == "off") return PowerState::off;
    if (text == "off-enabling") return PowerState::turningOn;
    if (text == "on-disabling") return PowerState::turningOff;
    return text == "off-blocked" ? PowerState::blocked : PowerState::unknown;
}

template <class Read>
int readProperties(sd_bus_message* message, Read&& read) {
    return readEntries(message, "{sv}", "sv", [&] {
        const char* name = nullptr;
        const int result = sd_bus_message_read_basic(message, 's', &name);
        return failed(result) ? result : read(std::string_view(name));
    });
}

int readDeviceProperty(sd_bus_message* message, std::string_view name, DeviceNews& news) {
    if (name == "RSSI") return readRSSI(message, news);
    if (name == "ManufacturerData") return readManufacturers(message, news);
    if (name == "UUIDs") return readServices(message, news);
    if (name == "Name") return readText(message, [&](std::string_view text) { news.name = text; });
    if (name == "Address") return readText(message, [&](std::string_view text) { news.address = text; });
    if (name == "AddressType") {
        return readText(message, [&](std::string_view text) { news.randomAddress = text == "random"; });
    }
    return sd_bus_message_skip(message, "v");
}

int readAdapterProperty(sd_bus_message* message, std::string_view name, AdapterNews& news) {
    if (name == "Powered") return readBoolean(message, news.powered);
    if (name == "Discovering") return readBoolean(message, news.discovering);
    if (name == "Roles") return readRoles(message, news);
    if (name == "Address") return readText(message, [&](std::string_view text) { news.address = text; });
    if (name == "PowerState") {
        return readText(message, [&](std::string_view text) { news.powerState = powerStateOf(text); });
    }
    return sd_bus_message_skip(message, "v");
}

/// Opens something of that number, where nothing has it.
void fillNumber(int descriptor) noexcept {
    const int filling = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (filling == descriptor) return;
    const int copy = fcntl(filling, F_DUPFD_CLOEXEC, descriptor);
    if (copy != descriptor) close(copy);  // something has it
    close(filling);
}

}  // namespace

void SdBusDeleter::operator()(sd_bus* bus) const noexcept {
    fillNumber(sd_bus_get_fd(bus));  // sd-bus ends the process where it cannot close its descriptor
    sd_bus_close_unref(bus);
}

Failure failureOf(int result) {
    const bool denied = result == -EACCES || result == -EPERM;
    return {denied ? std::string(error::accessDenied) : "System.Error", std::generic_category().message(-result)};
}

std::optional<Failure> failureIn(const sd_bus_error* error) {
    if (error == nullptr || sd_bus_error_is_set(error) == 0) return std::nullopt;
    return Failure{error->name, error->message == nullptr ? "" : error->message};
}

int readAdapter(sd_bus_message* message, AdapterNews& news) {
    return readProperties(message, [&](std::string_view name) { return readAdapterProperty(message, name, news); });
}

int readDevice(sd_bus_message* message, DeviceNews& news) {
    news.clear();
    return readProperties(message, [&](std::string_view name) { return readDeviceProperty(message, name, news); });
}

int readInvalidated(sd_bus_message* message, DeviceNews& news) {
    return readTexts(message, [&](std::string_view name) { news.noMoreRSSI = news.noMoreRSSI || name == "RSSI"; });
}

int readInterfaces(sd_bus_message* message, std::string_view path, bool listed, DeviceNews& news,
                   ObjectListener& listener) {
    AdapterNews adapter;
    bool isAdapter = false;
    bool isDevice = false;
    bool offersMonitors = false;
    const int result = readEntries(message, "{sa{sv}}", "sa{sv}", [&] {
        const char* text = nullptr;
        const int read = sd_bus_message_read_basic(message, 's', &text);
        if (failed(read)) return read;
        const std::string_view name(text);
        offersMonitors = offersMonitors || name == interface::monitorManager;
        if (name == interface::adapter) {
            isAdapter = true;
            return readAdapter(message, adapter);
        }
        if (name != interface::device) return sd_bus_message_skip(message, "a{sv}");
        isDevice = true;
        return readDevice(message, news);
    });
    if (failed(result)) return result;
    if (isAdapter) listener.adapterAdded(path, adapter);
    if (offersMonitors) listener.monitorsOffered(path);
    if (isDevice && listed) listener.deviceListed(path, news);
    if (isDevice && !listed) listener.deviceAdded(path, news);
    return result;
}

int readObjects(sd_bus_message* message, DeviceNews& news, ObjectListener& listener) {
    return readEntries(message, "{oa{sa{sv}}}", "oa{sa{sv}}", [&] {
        const char* path = nullptr;
        const int result = sd_bus_message_read_basic(message, 'o', &path);
        return failed(result) ? result : readInterfaces(message, path, true, news, listener);
    });
}

int readRemoved(sd_bus_message* message, SystemBusListener& listener) {
    const char* path = nullptr;
    const int result = sd_bus_message_read_basic(message, 'o', &path);
    if (failed(result)) return result;
    return readTexts(message, [&](std::string_view name) {
        if (name == interface::device) listener.deviceRemoved(path);
        if (name == interface::adapter) listener.adapterRemoved(path);
    });
}

}  // namespace nearcast::bluez
