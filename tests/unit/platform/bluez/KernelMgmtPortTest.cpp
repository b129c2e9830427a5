// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/KernelMgmtPort.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <vector>

namespace nearcast::bluez {

namespace {

/// Two ends of a socket whose messages stay whole; the second one has the filter.
class NewsFilter : public testing::Test {
protected:
    NewsFilter() {
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0, ends_.data()), 0);
        EXPECT_EQ(filterNews(ends_[1]), 0);
    }
    ~NewsFilter() override {
        for (const int end : ends_) close(end);
    }

    bool passes(const std::vector<std::uint8_t>& message) {
        send(ends_[0], message.data(), message.size(), MSG_DONTWAIT);
        std::array<std::uint8_t, 64> buffer{};
        const ssize_t octets = recv(ends_[1], buffer.data(), buffer.size(), MSG_DONTWAIT);
        return octets == static_cast<ssize_t>(message.size());
    }

private:
    std::array<int, 2> ends_{};
};

TEST_F(NewsFilter, LetsAnswersThroughWhole) {
    EXPECT_TRUE(passes({1, 0, 0, 0, 4, 0, 0x23, 0, 0, 6}));
    EXPECT_TRUE(passes({2, 0, 0, 0, 3, 0, 0x23, 0, 0x14}));
}

TEST_F(NewsFilter, LetsTheNewsOfADiscoveryThrough) { EXPECT_TRUE(passes({0x13, 0, 0, 0, 2, 0, 6, 1})); }

TEST_F(NewsFilter, LetsNoReportThrough) {
    EXPECT_FALSE(passes({0x12, 0, 0, 0, 14, 0, 1, 2, 3, 4, 5, 6, 1, 0xC4, 0, 0, 0, 0, 0, 0}));
}

TEST_F(NewsFilter, LetsNothingElseThrough) {
    for (const int code : {0, 3, 6, 0x0B, 0x14}) EXPECT_FALSE(passes({static_cast<std::uint8_t>(code), 0, 0, 0, 0, 0}));
    EXPECT_FALSE(passes({1, 1, 0, 0, 0, 0}));
    EXPECT_FALSE(passes({0x13, 0x13, 0, 0, 0, 0}));
    EXPECT_FALSE(passes({1}));
}

TEST(KernelMgmtPort, IsClosedUntilItIsOpened) {
    KernelMgmtPort port;
    EXPECT_EQ(port.descriptor(), -1);
    EXPECT_EQ(port.receive().error, EBADF);
    const std::uint8_t command[] = {0};
    EXPECT_EQ(port.send(command), EBADF);
}

/// Where the kernel has no Bluetooth, or it is kept from us, it says why.
TEST(KernelMgmtPort, OpensOrSaysWhyNot) {
    KernelMgmtPort port;
    const int error = port.open();
    EXPECT_EQ(error == 0, port.descriptor() >= 0) << error;
    port.close();
    EXPECT_EQ(port.descriptor(), -1);
}

}  // namespace

}  // namespace nearcast::bluez
