// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "doubles/BluezBench.h"

#include <gtest/gtest.h>

#include <chrono>

namespace nearcast::bluez {

/// A session, and a dongle that advertises ten times a second.
class BluezSessionTest : public testing::Test {
protected:
    BluezSessionTest() { bluez().place({}); }

    FakeBluez& bluez() { return bench.bluez; }
    /// A scan is wanted, and runs.
    void scan() {
        bench.session.want(true);
        bench.settle();
    }
    [[nodiscard]] CBManagerState state() const { return bench.session.state(); }
    [[nodiscard]] const std::string& why() const { return bench.session.why(); }
    [[nodiscard]] bool says(std::string_view words) const { return why().find(words) != std::string::npos; }

    BluezBench bench;
};

}  // namespace nearcast::bluez
