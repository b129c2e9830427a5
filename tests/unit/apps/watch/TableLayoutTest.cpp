// SPDX-License-Identifier: Apache-2.0
#include "support/Printable.h"
#include "watch/TableLayout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace nearcast::cli {
namespace {

TableRow rowOf(std::string_view portName) {
    return {portName, QXDeviceTypeDesktopPrinter, "02:4E:43:00:00:01", -60, 1.25};
}

std::string shownAt(std::size_t width) { return TableLayout(width).row(rowOf("BT:Front Desk")); }

bool holds(const std::string& line, std::string_view text) { return line.find(text) != std::string::npos; }

TEST(TableLayout, NoLineIsLongerThanTheTerminalWhateverItsWidth) {
    const std::vector<std::string> names = {"BT:Front Desk", "", "厨房打印机一二三四五六七八九十一二三四五六七",
                                            "\x1b]0;x\x07", std::string(300, 'x')};
    for (std::size_t width = 0; width <= 200; ++width) {
        const TableLayout layout(width);
        EXPECT_LE(widthOf(layout.heading()), width) << layout.heading();
        for (const std::string& name : names) {
            for (const auto RSSI : {std::optional(-60), std::optional(-2147483647), std::optional<int>()}) {
                TableRow row = rowOf(name);
                row.RSSI = RSSI;
                row.age = 1e12;
                EXPECT_EQ(widthOf(layout.row(row)), widthOf(layout.heading())) << layout.row(row);
            }
        }
    }
}

TEST(TableLayout, EverythingIsShownIn80Columns) {
    const std::string line = shownAt(79);
    for (const char* part : {"BT:Front Desk", "printer", "02:4E:43:00:00:01", "-60 dBm", "##", "1.2 s"}) {
        EXPECT_TRUE(holds(line, part)) << line;
    }
    EXPECT_TRUE(holds(TableLayout(79).heading(), "AGE"));
}

/// The least width at which a part is shown, and that it stays from there on.
std::size_t widthFor(std::string_view part) {
    std::size_t least = 0;
    for (std::size_t width = 1; width <= 200; ++width) {
        if (!holds(shownAt(width), part)) least = width + 1;
    }
    return least;
}

TEST(TableLayout, ColumnsGiveWayInTheirOrderPortAndSignalLast) {
    const std::size_t bar = widthFor("###");
    const std::size_t type = widthFor("printer");
    const std::size_t address = widthFor("02:4E:43:00:00:01");
    const std::size_t age = widthFor("1.2 s");
    EXPECT_GT(bar, type);
    EXPECT_GT(type, address);
    EXPECT_GT(address, age);
    EXPECT_GT(age, widthFor("BT:Front Desk"));
    EXPECT_GT(age, widthFor("-60 dBm"));
    EXPECT_EQ(age, 36U);
    EXPECT_LE(widthFor("BT:Front"), 19U);
    EXPECT_LE(widthFor("-60 dBm"), 19U);
}

TEST(TableLayout, ADongleWithoutAPortShowsByItsAddressWhereThatHasNoColumn) {
    EXPECT_TRUE(holds(TableLayout(79).row(rowOf("")), "-  ")) << TableLayout(79).row(rowOf(""));
    const std::string narrow = TableLayout(40).row(rowOf(""));
    EXPECT_EQ(narrow.find("02:4E:43:00:00:01"), 0U) << narrow;
}

TEST(TableLayout, TheBarIsFullAtMinus40AndEmptyAtMinus100) {
    const auto barAt = [](int RSSI) {
        TableRow row = rowOf("P");
        row.RSSI = RSSI;
        const std::string line = TableLayout(200).row(row);
        return std::count(line.begin(), line.end(), '#');
    };
    EXPECT_EQ(barAt(-101), 0);
    EXPECT_EQ(barAt(-100), 0);
    EXPECT_EQ(barAt(-70), 10);
    EXPECT_EQ(barAt(-41), 19);
    EXPECT_EQ(barAt(-40), 20);
    EXPECT_EQ(barAt(20), 20);
}

TEST(TableLayout, ASilentDongleHasNeitherSignalNorAge) {
    TableRow row = rowOf("BT:Bar");
    row.RSSI.reset();
    const std::string line = TableLayout(79).row(row);
    EXPECT_TRUE(holds(line, "silent")) << line;
    EXPECT_FALSE(holds(line, "dBm")) << line;
    EXPECT_FALSE(holds(line, " s ")) << line;
}

}  // namespace
}  // namespace nearcast::cli
