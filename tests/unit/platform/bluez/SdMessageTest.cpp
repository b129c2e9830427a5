// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/SdMessage.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <functional>
#include <vector>

namespace nearcast::bluez {

namespace {

/// Writes messages on a bus that has nobody at its other end.
class SdMessageTest : public testing::Test {
protected:
    SdMessageTest() {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends_.data()), 0);
        sd_bus* bus = nullptr;
        EXPECT_GE(sd_bus_new(&bus), 0);
        bus_.reset(bus);
        EXPECT_GE(sd_bus_set_fd(bus, ends_[0], ends_[0]), 0);
        EXPECT_GE(sd_bus_start(bus), 0);
    }
    ~SdMessageTest() override {
        message_.reset();
        bus_.reset();  // closes its own end
        close(ends_[1]);
    }

    /// A message that holds what `fill` appends, ready to be read.
    sd_bus_message* written(const std::function<void(sd_bus_message*)>& fill) {
        sd_bus_message* raw = nullptr;
        EXPECT_GE(sd_bus_message_new_signal(bus_.get(), &raw, "/org/bluez/hci0/dev_X", interface::properties, "Test"),
                  0);
        message_.reset(raw);
        fill(raw);
        EXPECT_GE(sd_bus_message_seal(raw, 1, 0), 0);
        return raw;
    }
    /// Reads a device from the properties that `fill` appends.
    int read(const std::function<void(sd_bus_message*)>& fill) { return readDevice(written(fill), news_); }

    std::vector<std::uint8_t> octets() const {
        return {news_.manufacturer->octets.begin(), news_.manufacturer->octets.end()};
    }

    DeviceNews news_;

private:
    std::array<int, 2> ends_{};
    BusPointer bus_;
    MessagePointer message_;
};

TEST_F(SdMessageTest, ReadsWhatAReportCarries) {
    ASSERT_GE(read([](sd_bus_message* message) {
                  sd_bus_message_append(message, "a{sv}", 2, "RSSI", "n", -61, "ManufacturerData", "a{qv}", 1, 0xFFFF,
                                        "ay", 6, 2, 0, 0, 0, 0, 7);
              }),
              0);
    EXPECT_EQ(news_.RSSI, -61);
    ASSERT_TRUE(news_.manufacturer);
    EXPECT_EQ(news_.manufacturer->company, 0xFFFF);
    EXPECT_EQ(octets(), (std::vector<std::uint8_t>{2, 0, 0, 0, 0, 7}));
    EXPECT_FALSE(news_.name);
    EXPECT_FALSE(news_.hasServices);
}

TEST_F(SdMessageTest, ReadsWhatDescribesADevice) {
    ASSERT_GE(read([](sd_bus_message* message) {
                  sd_bus_message_append(message, "a{sv}", 4, "Name", "s", "QX1", "Address", "s", "02:00:00:00:00:07",
                                        "AddressType", "s", "random", "UUIDs", "as", 2, "180f", "180d");
              }),
              0);
    EXPECT_EQ(news_.name, "QX1");
    EXPECT_EQ(news_.address, "02:00:00:00:00:07");
    EXPECT_EQ(news_.randomAddress, true);
    EXPECT_EQ(news_.services, (std::vector<std::string_view>{"180f", "180d"}));
    EXPECT_FALSE(news_.RSSI);
}

TEST_F(SdMessageTest, TakesTheDonglesCompanyWhereverItStands) {
    for (const bool first : {true, false}) {
        ASSERT_GE(read([first](sd_bus_message* message) {
                      sd_bus_message_append(message, "a{sv}", 1, "ManufacturerData", "a{qv}", 2,
                                            first ? 0xFFFF : 0x004C, "ay", 1, first ? 1 : 2, first ? 0x004C : 0xFFFF,
                                            "ay", 1, first ? 2 : 1);
                  }),
                  0);
        EXPECT_EQ(news_.manufacturer->company, 0xFFFF);
        EXPECT_EQ(octets(), std::vector<std::uint8_t>{1});
    }
}

TEST_F(SdMessageTest, TakesTheFirstOfOtherCompanies) {
    ASSERT_GE(read([](sd_bus_message* message) {
                  sd_bus_message_append(message, "a{sv}", 1, "ManufacturerData", "a{qv}", 2, 0x004C, "ay", 1, 1, 0x0006,
                                        "ay", 1, 2);
              }),
              0);
    EXPECT_EQ(news_.manufacturer->company, 0x004C);
}

TEST_F(SdMessageTest, PassesOverPropertiesOfATypeThatIsNotTheirs) {
    ASSERT_GE(read([](sd_bus_message* message) {
                  sd_bus_message_append(message, "a{sv}", 6, "RSSI", "s", "strong", "ManufacturerData", "ay", 2, 1, 2,
                                        "UUIDs", "s", "180f", "Name", "u", 7, "AddressType", "b", 1, "Address", "ay", 1,
                                        2);
              }),
              0);
    EXPECT_FALSE(news_.RSSI);
    EXPECT_FALSE(news_.manufacturer);
    EXPECT_FALSE(news_.hasServices);
    EXPECT_FALSE(news_.name);
    EXPECT_FALSE(news_.randomAddress);
    EXPECT_FALSE(news_.address);
}

TEST_F(SdMessageTest, PassesOverCompaniesWhoseDataAreNoOctets) {
    ASSERT_GE(read([](sd_bus_message* message) {
                  sd_bus_message_append(message, "a{sv}", 2, "ManufacturerData", "a{qv}", 1, 0xFFFF, "s", "text",
                                        "RSSI", "n", -40);
              }),
              0);
    EXPECT_FALSE(news_.manufacturer);
    EXPECT_EQ(news_.RSSI, -40) << "what follows is read";
}

TEST_F(SdMessageTest, PassesOverPropertiesThatItDoesNotKnow) {
    ASSERT_GE(read([](sd_bus_message* message) {
                  sd_bus_message_append(message, "a{sv}", 3, "TxPower", "n", 4, "ServiceData", "a{sv}", 1, "180f", "ay",
                                        1, 9, "RSSI", "n", 127);
              }),
              0);
    EXPECT_EQ(news_.RSSI, 127);
}

TEST_F(SdMessageTest, ForgetsWhatTheMessageBeforeSaid) {
    ASSERT_GE(read([](sd_bus_message* message) { sd_bus_message_append(message, "a{sv}", 1, "RSSI", "n", -1); }), 0);
    ASSERT_GE(read([](sd_bus_message* message) { sd_bus_message_append(message, "a{sv}", 1, "Name", "s", "x"); }), 0);
    EXPECT_FALSE(news_.RSSI);
}

TEST_F(SdMessageTest, RefusesAMessageOfAnotherShape) {
    EXPECT_LT(read([](sd_bus_message* message) { sd_bus_message_append(message, "s", "RSSI"); }), 0);
    EXPECT_LT(read([](sd_bus_message* message) { sd_bus_message_append(message, "as", 1, "RSSI"); }), 0);
    EXPECT_LT(read([](sd_bus_message*) {}), 0) << "an empty one";
}

TEST_F(SdMessageTest, SeesTheReadingAmongTheInvalidProperties) {
    EXPECT_GE(readInvalidated(
                  written([](sd_bus_message* message) { sd_bus_message_append(message, "as", 2, "TxPower", "RSSI"); }),
                  news_),
              0);
    EXPECT_TRUE(news_.noMoreRSSI);
}

TEST_F(SdMessageTest, ReadsAnAdapter) {
    AdapterNews news;
    auto* message = written([](sd_bus_message* raw) {
        sd_bus_message_append(raw, "a{sv}", 3, "Powered", "b", 1, "Discovering", "b", 0, "PowerState", "s",
                              "off-blocked");
    });
    ASSERT_GE(readAdapter(message, news), 0);
    EXPECT_EQ(news.powered, true);
    EXPECT_EQ(news.discovering, false);
    EXPECT_EQ(news.powerState, PowerState::blocked);
    EXPECT_FALSE(news.central);
    EXPECT_FALSE(news.address);
}

TEST_F(SdMessageTest, ReadsWhetherAnAdapterCanScan) {
    const auto central = [this](const char* role) {
        AdapterNews news;
        auto* message = written([role](sd_bus_message* raw) {
            sd_bus_message_append(raw, "a{sv}", 2, "Address", "s", "02:00:00:00:00:07", "Roles", "as", 2, role,
                                  "peripheral");
        });
        EXPECT_GE(readAdapter(message, news), 0);
        EXPECT_EQ(news.address, "02:00:00:00:00:07");
        return news.central;
    };
    EXPECT_EQ(central("central"), true);
    EXPECT_EQ(central("central-peripheral"), false);
}

TEST(SdFailure, HasTheNameOfTheError) {
    EXPECT_FALSE(failureIn(nullptr));
    const sd_bus_error none{};
    EXPECT_FALSE(failureIn(&none));
    const sd_bus_error denied{"org.freedesktop.DBus.Error.AccessDenied", "Rejected", 0};
    EXPECT_EQ(failureIn(&denied)->name, error::accessDenied);
    EXPECT_EQ(failureIn(&denied)->message, "Rejected");
}

TEST(SdFailure, TellsAConnectionThatIsDeniedFromOthers) {
    EXPECT_EQ(failureOf(-EACCES).name, error::accessDenied);
    EXPECT_EQ(failureOf(-ENOENT).name, "System.Error");
    EXPECT_EQ(failureOf(-ENOENT).message, "No such file or directory");
}

}  // namespace

}  // namespace nearcast::bluez
