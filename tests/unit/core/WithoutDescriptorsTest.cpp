// SPDX-License-Identifier: Apache-2.0
#include <nearcast/Platform.h>
#include <nearcast/QXNearcastManager.h>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <string>
#include <system_error>

namespace nearcast {
namespace {

TEST(SingletonWithoutDescriptors, LeavesAnEmptyManagerToo) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    testing::internal::CaptureStderr();
    setrlimit(RLIMIT_NOFILE, &none);
    EXPECT_THROW(QXNearcastManager::sharedManager(), std::system_error);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(testing::internal::GetCapturedStderr().find("The radio cannot be opened: "), 0U);
    auto& manager = QXNearcastManager::sharedManager();
    EXPECT_NE(Platform::radioHealth().why.find("the radio cannot be opened: "), std::string::npos);
    EXPECT_EQ(manager.samplingNumber(), 0U);
    EXPECT_TRUE(manager.getSettings()->empty());
    EXPECT_EQ(manager.serializedSettings(), "{}");
    EXPECT_GT(Platform::now(), 0) << "the machine's clock";
}

}  // namespace
}  // namespace nearcast
