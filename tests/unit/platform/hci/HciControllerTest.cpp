// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciController.h"

#include "doubles/hci/FakeController.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <deque>

namespace nearcast::hci {

namespace {

using namespace std::chrono_literals;
using Phase = HciController::Phase;
using Opcodes = std::vector<std::uint16_t>;

class HciControllerTest : public testing::Test {
protected:
    void start() {
        controller.start(now);
        talk();
    }
    void scan(bool wanted) {
        controller.setScan(wanted, now);
        talk();
    }
    /// Hands over the answers until there are no more.
    void talk() {
        while (!answers.empty()) {
            const Octets answer = answers.front();
            answers.pop_front();
            controller.received(std::span(answer).subspan(1), now);
        }
    }
    void event(const char* text) { controller.received(hex(text), now); }
    void at(Time time) {
        now = time;
        controller.tick(now);
        talk();
    }
    Opcodes commandsOf(const std::function<void()>& deed) {
        const std::size_t before = fake.commands().size();
        deed();
        return {fake.commands().begin() + static_cast<std::ptrdiff_t>(before), fake.commands().end()};
    }

    FakeController fake;
    std::deque<Octets> answers;
    int writeError = 0;
    Time now = 100s;
    HciController controller{[this](std::span<const std::uint8_t> packet) {
        if (writeError != 0) return writeError;
        for (Octets& answer : fake.take(packet)) answers.push_back(std::move(answer));
        return 0;
    }};
};

TEST_F(HciControllerTest, DoesNothingBeforeItIsStarted) {
    scan(true);
    EXPECT_EQ(controller.phase(), Phase::idle);
    EXPECT_TRUE(fake.commands().empty());
    EXPECT_FALSE(controller.due());
}

TEST_F(HciControllerTest, IsResetAndAskedBeforeItIsReady) {
    controller.start(now);
    EXPECT_EQ(controller.phase(), Phase::starting);
    talk();
    EXPECT_EQ(controller.phase(), Phase::ready);
    EXPECT_EQ(fake.commands(),
              (Opcodes{reset, readLocalSupportedFeatures, readLocalSupportedCommands, setEventMask, leSetEventMask}));
    EXPECT_FALSE(controller.due());
}

TEST_F(HciControllerTest, TellsAControllerOfBothKindsThatItsHostHasLowEnergy) {
    fake.classic = true;
    start();
    EXPECT_EQ(fake.count(writeLEHostSupport), 1);
    scan(true);
    EXPECT_TRUE(fake.hear({}));
}

TEST_F(HciControllerTest, ScansWithoutAPause) {
    for (const bool extended : {false, true}) {
        fake.extended = extended;
        start();
        scan(true);
        EXPECT_TRUE(fake.scans());
        EXPECT_TRUE(fake.continuous());
    }
}

TEST_F(HciControllerTest, ScansPassivelyWithDuplicates) {
    start();
    EXPECT_EQ(commandsOf([&] { scan(true); }), (Opcodes{leSetScanParameters, leSetScanEnable}));
    EXPECT_TRUE(controller.scanning());
    EXPECT_TRUE(fake.passive());
    EXPECT_TRUE(fake.hear({}));
    EXPECT_TRUE(fake.hear({}));
}

TEST_F(HciControllerTest, UsesTheExtendedCommandsWhereTheControllerHasThem) {
    fake.extended = true;
    start();
    EXPECT_EQ(commandsOf([&] { scan(true); }), (Opcodes{leSetExtendedScanParameters, leSetExtendedScanEnable}));
    EXPECT_TRUE(fake.passive());
    EXPECT_TRUE(fake.hear({}));
    EXPECT_TRUE(fake.hear({}));
    EXPECT_EQ(commandsOf([&] { scan(false); }), (Opcodes{leSetExtendedScanEnable}));
    EXPECT_FALSE(fake.scans());
}

TEST_F(HciControllerTest, TakesAControllerThatDoesNotTellItsCommandsForAnOldOne) {
    fake.failNext(readLocalSupportedCommands, 0x01);
    start();
    scan(true);
    EXPECT_EQ(fake.count(leSetScanEnable), 1);
    EXPECT_TRUE(fake.hear({}));
}

TEST_F(HciControllerTest, KeepsAWishThatComesWhileItIsBeingStarted) {
    controller.start(now);
    controller.setScan(true, now);
    EXPECT_FALSE(controller.scanning());
    talk();
    EXPECT_TRUE(fake.scans());
}

TEST_F(HciControllerTest, KeepsTheWishThroughANewStart) {
    start();
    scan(true);
    start();
    EXPECT_TRUE(fake.scans());
    EXPECT_EQ(fake.count(reset), 2);
}

TEST_F(HciControllerTest, FollowsTheLastOfSeveralWishes) {
    start();
    controller.setScan(true, now);
    controller.setScan(false, now);
    controller.setScan(true, now);
    controller.setScan(false, now);
    talk();
    EXPECT_FALSE(fake.scans());
    EXPECT_FALSE(controller.scanning());
}

TEST_F(HciControllerTest, BeginsAScanAgainByEndingItFirst) {
    start();
    scan(true);
    EXPECT_EQ(commandsOf([&] {
                  controller.restartScan(now);
                  talk();
              }),
              (Opcodes{leSetScanEnable, leSetScanParameters, leSetScanEnable}));
    EXPECT_TRUE(fake.scans());
}

TEST_F(HciControllerTest, DoesNotBeginAScanAgainThatIsNotWanted) {
    start();
    EXPECT_EQ(commandsOf([&] {
                  controller.restartScan(now);
                  talk();
              }),
              Opcodes{});
    EXPECT_FALSE(fake.scans());
}

TEST_F(HciControllerTest, BeginsAScanAgainWhileItIsAskedWhetherItLives) {
    start();
    scan(true);
    EXPECT_EQ(commandsOf([&] {
                  controller.probe(now);
                  controller.restartScan(now);
                  talk();
              }),
              (Opcodes{readLocalVersion, leSetScanEnable, leSetScanParameters, leSetScanEnable}));
    EXPECT_TRUE(fake.scans());
}

TEST_F(HciControllerTest, IsNotAskedWhetherItLivesWhileAnotherAnswerShowsIt) {
    controller.start(now);
    controller.probe(now);
    talk();
    controller.setScan(true, now);
    controller.probe(now);
    talk();
    EXPECT_EQ(fake.count(readLocalVersion), 0);
    EXPECT_TRUE(fake.scans());
}

TEST_F(HciControllerTest, FailsWhenItDoesNotAnswerWhetherItLives) {
    start();
    fake.mute = true;
    controller.probe(now);
    at(102s - 1ns);
    EXPECT_EQ(controller.phase(), Phase::ready);
    at(102s);
    EXPECT_EQ(controller.failure(), "did not answer command 0x1001");
}

TEST_F(HciControllerTest, DoesNotMindAScanThatHadEndedAlready) {
    start();
    scan(true);
    fake.failNext(leSetScanEnable, commandDisallowed);
    scan(false);
    EXPECT_EQ(controller.phase(), Phase::ready);
}

TEST_F(HciControllerTest, SendsOneCommandAtATime) {
    controller.start(now);
    EXPECT_EQ(fake.commands().size(), 1U);
    event("0F 04 00 01 03 0C");  // begun, not done
    event("0E 04 01 03 10 00");  // an answer to a command that is not under way
    event("0E 03 01 00 00");     // and one to none
    EXPECT_EQ(fake.commands().size(), 1U);
}

TEST_F(HciControllerTest, WaitsWhileTheControllerHasNoRoom) {
    fake.roomless = true;
    start();
    EXPECT_EQ(fake.commands().size(), 1U);
    event("0E 03 01 00 00");
    EXPECT_EQ(fake.commands().size(), 2U);
}

TEST_F(HciControllerTest, TriesAControllerThatForgetsToTellOfItsRoom) {
    fake.roomless = true;
    start();
    at(102s - 1ns);
    EXPECT_EQ(fake.commands().size(), 1U);
    at(102s);
    EXPECT_EQ(fake.commands().size(), 2U);
}

TEST_F(HciControllerTest, FailsWhenAnAnswerDoesNotComeInTime) {
    fake.mute = true;
    start();
    EXPECT_EQ(controller.due(), 102s);
    at(102s - 1ns);
    EXPECT_EQ(controller.phase(), Phase::starting);
    at(102s);
    EXPECT_EQ(controller.phase(), Phase::failed);
    EXPECT_EQ(controller.failure(), "did not answer command 0x0C03");
    EXPECT_FALSE(controller.due());
}

TEST_F(HciControllerTest, FailsWhenACommandIsRefused) {
    start();
    fake.failNext(leSetScanParameters, 0x12);
    scan(true);
    EXPECT_EQ(controller.phase(), Phase::failed);
    EXPECT_EQ(controller.failure(), "answered command 0x200B with error 0x12");
}

TEST_F(HciControllerTest, FailsWhenACommandCannotBeSent) {
    writeError = ENETDOWN;
    start();
    EXPECT_EQ(controller.phase(), Phase::failed);
    EXPECT_EQ(controller.failure(), "took no command 0x0C03: Network is down");
}

TEST_F(HciControllerTest, FailsOnAHardwareError) {
    start();
    event("10 01 42");
    EXPECT_EQ(controller.phase(), Phase::failed);
    EXPECT_EQ(controller.failure(), "reported hardware error 0x42");
}

TEST_F(HciControllerTest, WorksAgainAfterANewStart) {
    start();
    scan(true);
    event("10 01 42");
    start();
    EXPECT_EQ(controller.phase(), Phase::ready);
    EXPECT_TRUE(controller.failure().empty());
    EXPECT_TRUE(fake.scans());
}

TEST_F(HciControllerTest, IsUnsuitedWithoutLowEnergy) {
    fake.lowEnergy = false;
    start();
    EXPECT_EQ(controller.phase(), Phase::unsuited);
    EXPECT_FALSE(controller.due());
    scan(true);
    EXPECT_EQ(fake.count(leSetScanEnable), 0);
}

TEST_F(HciControllerTest, IsNotConfusedByEventsThatAreCut) {
    start();
    const std::size_t before = fake.commands().size();
    for (const char* cut : {"", "0E", "0E 01", "0E 03 01 03", "0F 01", "10", "10 00"}) event(cut);
    EXPECT_EQ(controller.phase(), Phase::ready);
    EXPECT_EQ(fake.commands().size(), before);
}

}  // namespace

}  // namespace nearcast::hci
