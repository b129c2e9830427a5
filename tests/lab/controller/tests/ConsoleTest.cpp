// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Console.h"

#include <gtest/gtest.h>

namespace nearcast::lab {

namespace {

class RecordingDevice : public Device {
public:
    unsigned plug() override {
        plugged_ = true;
        return 3;
    }
    void unplug() override { plugged_ = false; }
    [[nodiscard]] bool plugged() const override { return plugged_; }
    void send(std::span<const std::uint8_t> event) override { sent.emplace_back(event.begin(), event.end()); }

    std::vector<Bytes> sent;

private:
    bool plugged_ = false;
};

class ConsoleTest : public testing::Test {
protected:
    std::string obey(std::string_view line) { return console.obey(line, Time(0)); }
    void scan() { console.command(Bytes{0x0c, 0x20, 2, 1, 0}); }

    RecordingDevice device;
    Console console{device};
};

TEST_F(ConsoleTest, TellsTheNumberOfANewController) { EXPECT_EQ(obey("plug extended strict"), "ok 3"); }

TEST_F(ConsoleTest, TakesAControllerAway) {
    obey("plug");
    EXPECT_EQ(obey("unplug"), "ok");
    EXPECT_FALSE(device.plugged());
    scan();
    EXPECT_TRUE(device.sent.empty());
}

TEST_F(ConsoleTest, SaysWhatIsWrong) {
    EXPECT_EQ(obey(""), "error nothing was said");
    EXPECT_EQ(obey("dance"), "error there is no command 'dance'");
    EXPECT_EQ(obey("silence"), "error 'silence' wants a word more");
    EXPECT_EQ(obey("silence d"), "error there is no dongle 'd'");
    EXPECT_EQ(obey("plug 5.0"), "error a controller has no '5.0'");
    EXPECT_EQ(obey("dongle d colour=red"), "error a dongle has no 'colour=red'");
    EXPECT_EQ(obey("dongle d rate=0"), "error a rate has to be above 0");
    EXPECT_EQ(obey("dongle d payload=0"), "error '0' is not an octet");
    EXPECT_EQ(obey("mute yes"), "error 'yes' is neither on nor off");
}

TEST_F(ConsoleTest, PutsADongleOnTheAir) {
    obey("plug");
    scan();
    obey("dongle d address=C0:00:00:00:00:01 payload=024e43000001 rate=10 rssi=-61,-62");
    device.sent.clear();
    console.advance(std::chrono::seconds(1));
    EXPECT_NEAR(static_cast<double>(device.sent.size()), 10, 1);
}

TEST_F(ConsoleTest, IsDeadWhileMute) {
    obey("plug");
    scan();
    obey("dongle d");
    obey("mute on");
    device.sent.clear();
    scan();
    console.advance(std::chrono::seconds(1));
    EXPECT_TRUE(device.sent.empty());
    obey("mute off");
    console.advance(std::chrono::seconds(2));
    EXPECT_FALSE(device.sent.empty());
}

TEST_F(ConsoleTest, CountsWhatIsOnTheAir) {
    obey("dongle d");
    console.advance(std::chrono::milliseconds(115));
    EXPECT_EQ(obey("counters"),
              R"(ok {"plugged":false,"scanning":false,"active":false,"filterDuplicates":false,"extended":false,)"
              R"("scanEnables":0,"commands":0,"unknown":{},"dongles":{"d":{"aired":1,"reported":0}}})");
}

}  // namespace

}  // namespace nearcast::lab
