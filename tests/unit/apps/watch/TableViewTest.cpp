// SPDX-License-Identifier: Apache-2.0
#include "support/Printable.h"
#include "watch/WatchView.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

/// What a table draws that has seen this.
template <class See>
std::string drawn(const See& see) {
    const auto view = makeTableView();
    testing::internal::CaptureStdout();
    see(*view);
    view->tick(1, {});
    return testing::internal::GetCapturedStdout();
}

WatchReport reportOf(std::string_view portName, std::string_view MACAddr) {
    return {1, portName, QXDeviceTypeDesktopPrinter, MACAddr, -60, std::nullopt};
}

TEST(TableView, ItsColumnsStandInLineWhateverTheNames) {
    const std::vector<std::string> names = {"BT:Bar",
                                            "厨房打印机一二三四五六七",
                                            "\u202Eretnirp",
                                            "e\u0301\u0301",
                                            "\x1b]0;title\x07",
                                            "😀\u200D😀",
                                            "\xC2\x9B"
                                            "9C",
                                            "\xFF\xFE"};
    const std::string table = drawn([&](WatchView& view) {
        for (const std::string& name : names) view.report(reportOf(name, "02:00:" + name));
    });
    EXPECT_TRUE(std::all_of(table.begin(), table.end(), [](char octet) { return octet != 0x1B && octet != 0x07; }));
    std::istringstream lines(table);
    std::size_t rows = 0;
    for (std::string line; std::getline(lines, line);) {
        const auto place = line.find(" dBm");
        if (place == std::string::npos) continue;
        ++rows;
        EXPECT_EQ(widthOf(line.substr(0, place)), 50U) << line;
        EXPECT_EQ(widthOf(line), 79U) << line;
    }
    EXPECT_EQ(rows, names.size());
}

TEST(TableView, HasRowsForSoManyStrangersAndNoMore) {
    const std::string table = drawn([](WatchView& view) {
        for (std::size_t number = 0; number < 2 * mostStrangers; ++number) {
            view.report(reportOf("", "A" + std::to_string(number)));
            view.silent(1, "", "B" + std::to_string(number));
        }
        view.report(reportOf("BT:Bar", "C"));
    });
    constexpr std::size_t shown = 17;  // a terminal of 24 lines has room for so many
    const std::string more = "... and " + std::to_string(mostStrangers + 1 - shown) + " more";
    EXPECT_NE(table.find(more), std::string::npos) << table;
}

}  // namespace
}  // namespace nearcast::cli
