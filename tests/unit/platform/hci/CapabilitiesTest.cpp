// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/Capabilities.h"

#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace nearcast {

namespace {

class CapabilitiesTest : public testing::Test {
protected:
    Capabilities of(const std::string& status) { return ownCapabilities(folder_.write("status", status)); }

private:
    const TemporaryFolder folder_;
};

TEST_F(CapabilitiesTest, AreThoseInEffect) {
    const struct {
        const char* mask;
        bool netAdmin, netRaw;
    } cases[] = {{"0000000000000000", false, false}, {"0000000000001000", true, false},
                 {"0000000000002000", false, true},  {"0000000000003000", true, true},
                 {"000001ffffffcfff", false, false}, {"000001ffffffffff", true, true}};
    for (const auto& one : cases) {
        const auto found = of(std::string("Name:\tnearcast\nCapPrm:\t000001ffffffffff\nCapEff:\t") + one.mask + "\n");
        EXPECT_EQ(found.netAdmin, one.netAdmin) << one.mask;
        EXPECT_EQ(found.netRaw, one.netRaw) << one.mask;
    }
}

TEST_F(CapabilitiesTest, AreNoneWhereTheyCannotBeRead) {
    for (const char* status : {"", "Name:\tnearcast\n", "CapEff:", "CapEff:\tnone\n"}) {
        EXPECT_FALSE(of(status).netRaw) << status;
    }
    EXPECT_FALSE(ownCapabilities("/nowhere/status").netAdmin);
}

TEST(OwnProgram, IsTheProgramThatRuns) { EXPECT_TRUE(ownProgram().ends_with("/unit_platform_hci")) << ownProgram(); }

}  // namespace

}  // namespace nearcast
