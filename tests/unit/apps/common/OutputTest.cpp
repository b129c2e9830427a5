// SPDX-License-Identifier: Apache-2.0
#include "common/Output.h"
#include "doubles/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <system_error>

namespace nearcast::cli {
namespace {

TEST(GrowingFile, HoldsEachPieceAsSoonAsItIsWritten) {
    const TemporaryFolder folder;
    GrowingFile file(folder.write("out", "before"));
    EXPECT_EQ(folder.read("out"), "") << "what was there is gone";
    file.write("one ");
    EXPECT_EQ(folder.read("out"), "one ");
    file.write("two");
    EXPECT_EQ(folder.read("out"), "one two");
}

TEST(GrowingFile, ThatCannotBeWrittenIsNamed) {
    GrowingFile file("/dev/full");
    EXPECT_THROW(file.write("x"), std::system_error);
    EXPECT_THROW(GrowingFile("/nowhere/x"), std::system_error);
}

}  // namespace
}  // namespace nearcast::cli
