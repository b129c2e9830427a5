// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingReader.h"

#include <gtest/gtest.h>

#include <string>
#include <system_error>

namespace nearcast::replay {
namespace {

std::string refusal(const std::string& path) {
    try {
        const auto reader = openRecording(path);
        return "opened";
    } catch (const std::system_error& error) {
        return error.what();
    }
}

TEST(MissingRecording, IsRefusedByItsNameAndTheSystemsWords) {
    EXPECT_EQ(refusal("/no/such/recording.pcapng"), "/no/such/recording.pcapng: No such file or directory");
}

TEST(MissingRecording, ADirectoryIsRefusedLikewise) { EXPECT_EQ(refusal("/"), "/: Is a directory"); }

}  // namespace
}  // namespace nearcast::replay
