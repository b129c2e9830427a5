// SPDX-License-Identifier: Apache-2.0
#include "../fuzz/CheckHciEvents.h"
#include "../fuzz/CheckHciSession.h"
#include "../fuzz/CheckRecording.h"
#include "unit/platform/hciformat/HciBytes.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

// Every seed of the fuzzers, named by its fault, in the ordinary test run.

namespace nearcast::replay {

namespace {

template <class Check>
void checkSeeds(const std::string& folder, std::size_t atLeast, Check check) {
    const auto seeds = std::filesystem::path(NEARCAST_TEST_SOURCE_DIR) / "../fuzz/seeds" / folder;
    std::size_t checked = 0;
    for (const auto& entry : std::filesystem::directory_iterator(seeds)) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        EXPECT_NO_THROW(check(octetsOf(text))) << entry.path();
        ++checked;
    }
    EXPECT_GE(checked, atLeast);
}

TEST(Seeds, OfRecordingsHoldWhatHasToHold) {
    checkSeeds("recording", 30, [](const Octets& bytes) { fuzz::checkRecording(bytes); });
}

TEST(Seeds, OfHciEventsHoldWhatHasToHold) {
    checkSeeds("hci_events", 12, [](const Octets& bytes) { fuzz::checkHciEvents(bytes); });
}

TEST(Seeds, OfHciSessionsHoldWhatHasToHold) {
    checkSeeds("hci_session", 16, [](const Octets& bytes) { fuzz::checkHciSession(bytes); });
}

}  // namespace

}  // namespace nearcast::replay
