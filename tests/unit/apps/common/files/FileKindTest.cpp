// SPDX-License-Identifier: Apache-2.0
#include "common/files/FileKind.h"
#include "doubles/TemporaryFolder.h"
#include "platform/simulator/SimulatorOptions.h"

#include <gtest/gtest.h>

#include <string>

namespace nearcast::cli {
namespace {

class FileKind : public testing::Test {
protected:
    std::string kindOf(const std::string& content) { return whatItIs(folder_.write("file", content)); }

    TemporaryFolder folder_;
};

TEST_F(FileKind, IsToldOfAScene) {
    EXPECT_EQ(kindOf(std::string(simulator::builtInScene())),
              "; it is a scene, for --radio simulator:" + folder_.file("file"));
}

TEST_F(FileKind, IsToldOfSettings) {
    EXPECT_EQ(kindOf(R"({"BT:Bar": {"Device Type": "Printer"}})"), "; it is a settings file, for --settings");
}

TEST_F(FileKind, IsNotToldOfAnythingElse) {
    for (const char* content : {"", "{}", "[]", "hello", "{\"at\": 1, \"do\": \"end\"}\n{\"do\": \"dance\"}\n"}) {
        EXPECT_EQ(kindOf(content), "") << content;
    }
    EXPECT_EQ(kindOf(std::string("\0\0\0", 3)), "");
    EXPECT_EQ(whatItIs(folder_.file("none")), "");
    EXPECT_EQ(whatItIs("/dev/zero"), "") << "which has no end";
}

}  // namespace
}  // namespace nearcast::cli
