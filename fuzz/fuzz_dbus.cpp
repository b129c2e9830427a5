// SPDX-License-Identifier: Apache-2.0
// Any octets as what comes over the system bus. The first one says what the others are: the body of a signal of one of
// the kinds that are read, or whole messages.
#include "BusMessages.h"
#include "Expect.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <string_view>

namespace nearcast::fuzz {

namespace {

using namespace bluez;

constexpr std::array<std::string_view, 6> signatures = {"a{sv}",      "as",  "sa{sv}as",
                                                        "oa{sa{sv}}", "oas", "a{oa{sa{sv}}}"};

/// Reads everything that it is told, so that a text which is not there is noticed.
class Reading : public SystemBusListener {
public:
    void adapterAdded(std::string_view path, const AdapterNews& news) override {
        told(path);
        look(news);
    }
    void monitorsOffered(std::string_view adapter) override { told(adapter); }
    void deviceListed(std::string_view path, const DeviceNews& news) override {
        told(path);
        look(news);
    }
    void deviceAdded(std::string_view path, const DeviceNews& news) override { deviceListed(path, news); }
    void deviceRemoved(std::string_view path) override { told(path); }
    void adapterRemoved(std::string_view path) override { told(path); }
    void adapterChanged(std::string_view path, const AdapterNews& news) override { adapterAdded(path, news); }
    void deviceChanged(std::string_view path, const DeviceNews& news) override { deviceListed(path, news); }
    void busLost(const Failure& /*failure*/) override {}
    void daemonChanged(bool /*there*/) override {}
    void monitorReleased() override {}
    void forged() override {}

    void look(const AdapterNews& news) { look(news.address.value_or("")); }
    void look(const DeviceNews& news) {
        look(news.name.value_or(""));
        look(news.address.value_or(""));
        for (const std::string_view service : news.services) look(service);
        expect(news.hasServices || news.services.empty(), "services are there where a message has them");
        if (!news.manufacturer) return;
        const auto& octets = news.manufacturer->octets;
        sum_ = std::accumulate(octets.begin(), octets.end(), sum_);
    }

private:
    void look(std::string_view text) {
        expect(text.find('\0') == std::string_view::npos, "a text ends at its first zero");
        sum_ = std::accumulate(text.begin(), text.end(), sum_);
    }
    void told(std::string_view path) {
        expect(path.starts_with('/'), "an object has a path");
        look(path);
    }

    std::uint64_t sum_ = 0;
};

/// Reads the message from its begin. @return whether it was what `read` wanted
template <class Read>
bool readFromBegin(sd_bus_message* message, Read&& read) {
    return sd_bus_message_rewind(message, 1) >= 0 && read() >= 0;
}

int readChanged(sd_bus_message* message, DeviceNews& news) {
    const char* interface = nullptr;
    int result = sd_bus_message_read_basic(message, 's', &interface);
    if (result >= 0) result = readDevice(message, news);
    return result < 0 ? result : readInvalidated(message, news);
}

void readAll(sd_bus_message* message) {
    Reading reading;
    DeviceNews news;
    AdapterNews adapter;
    if (readFromBegin(message, [&] { return readAdapter(message, adapter); })) reading.look(adapter);
    if (readFromBegin(message, [&] { return readDevice(message, news); })) reading.look(news);
    if (readFromBegin(message, [&] { return readChanged(message, news); })) reading.look(news);
    readFromBegin(message, [&] { return readInterfaces(message, "/", true, news, reading); });
    readFromBegin(message, [&] { return readInterfaces(message, "/", false, news, reading); });
    readFromBegin(message, [&] { return readObjects(message, news, reading); });
    readFromBegin(message, [&] { return readRemoved(message, reading); });
    failureIn(sd_bus_message_get_error(message));
}

void checkMessages(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t longest = 1 << 15;  // what the socket takes at once
    if (bytes.empty() || bytes.size() > longest) return;
    const std::size_t kind = bytes.front();
    const auto rest = bytes.subspan(1);
    const Octets said =
        kind < signatures.size() ? SignalOctets::of(signatures.at(kind), rest) : Octets(rest.begin(), rest.end());
    SpokenBus bus(said);
    while (const auto message = bus.next()) readAll(message.get());
}

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkMessages({data, size});
    return 0;
}
