// SPDX-License-Identifier: Apache-2.0
#include "lines/PlainLine.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace nearcast::lines {

namespace {

/// What is read, in words, so that two readings compare.
std::string described(const Line& line) { return writeLine(line); }

/// With blanks in place of each "~".
std::string withBlanks(const std::string& text, const std::string& blanks) {
    std::string result;
    for (const char letter : text) result += letter == '~' ? blanks : std::string(1, letter);
    return result;
}

std::vector<std::string> plainLines() {
    std::vector<std::string> lines;
    const std::string rest = R"(, "do": "advertise", "name": null, "manufacturerData": null, "RSSI": -60})";
    for (const char* at : {"0", "0.0", "1", "10.5", "0.000001", "999999999.999999", "123456.7", "7.250000"}) {
        lines.push_back(R"({"at": )" + std::string(at) + rest);
    }
    const std::string head = R"({"at": 1.5, "do": "advertise", "name": )";
    for (const char* name : {"null", "\"\"", "\"QX001122AABBCC\"", "\" ~!#[]'{\""}) {
        for (const char* data : {"null", "\"\"", "\"FFFF00\"", "\"abCDef09\""}) {
            for (const char* RSSI : {"0", "-1", "20", "127", "-128", "999"}) {
                lines.push_back(head + name + ", \"manufacturerData\": " + data + ", \"RSSI\": " + RSSI + "}");
            }
        }
    }
    for (const char* services : {"[]", "[\"180F\"]", "[\"180F\", \"\", \"any\"]"}) {
        lines.push_back(head + R"(null, "manufacturerData": null, "RSSI": -60, "services": )" + services + "}");
    }
    lines.push_back(R"({"at": 2, "do": "advertise", "manufacturerData": "FFFF", "RSSI": -60})");
    lines.push_back(R"({"at": 2, "do": "advertise", "name": "ab", "RSSI": -60})");
    lines.push_back(R"({"at": 2, "do": "advertise", "RSSI": -60})");
    return lines;
}

TEST(PlainLine, IsReadAsJSONWouldBe) {
    for (const std::string& text : plainLines()) {
        const auto plain = readPlainLine(text, {});
        ASSERT_TRUE(plain) << text;
        EXPECT_EQ(described(*plain), described(parseJSONLine(text, {}))) << text;
    }
}

TEST(PlainLine, IsWhatTheWriterWrites) {
    for (const std::string& text : plainLines()) {
        const std::string written = writeLine(parseJSONLine(text, {}));
        EXPECT_TRUE(readPlainLine(written, {})) << written;
    }
}

TEST(PlainLine, CutOrWithOneOddCharacterIsLeftToJSON) {
    const std::string whole = R"({"at": 10.5, "do": "advertise", "name": "ab", "manufacturerData": "FF00", )"
                              R"("RSSI": -60, "services": ["180F", "180D"]})";
    ASSERT_TRUE(readPlainLine(whole, {}));
    for (std::size_t length = 0; length < whole.size(); ++length)
        EXPECT_FALSE(readPlainLine(whole.substr(0, length), {}));
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const char odd : {'\\', '\x80', '\x1F', '\0'}) {
            std::string text = whole;
            text[place] = odd;
            EXPECT_FALSE(readPlainLine(text, {})) << text;
        }
    }
}

TEST(PlainLine, IsReadInAnyOrderWithBlanksOrWithout) {
    std::vector<std::string> members = {R"("at"~:~10.5)",    R"("do"~:~"advertise")",
                                        R"("name"~:~"a b")", R"("manufacturerData"~:~"FF00")",
                                        R"("RSSI"~:~-60)",   R"("services"~:~[~"180F"~,~"180D"~])"};
    std::sort(members.begin(), members.end());
    do {
        std::string text = "~{~";
        for (const std::string& member : members) text += (text.size() > 3 ? "~,~" : "") + member;
        for (const char* blanks : {"", " ", "\t \r"}) {
            const std::string spaced = withBlanks(text + "~}~", blanks);
            const auto plain = readPlainLine(spaced, {});
            ASSERT_TRUE(plain) << spaced;
            ASSERT_EQ(described(*plain), described(parseJSONLine(spaced, {}))) << spaced;
        }
    } while (std::next_permutation(members.begin(), members.end()));
}

TEST(PlainLine, WithoutATimeHasThatOfTheLineBefore) {
    const auto plain = readPlainLine(R"({"do": "advertise", "RSSI": -60})", Time(1'500'000));
    ASSERT_TRUE(plain);
    EXPECT_EQ(plain->at, Time(1'500'000));
}

TEST(PlainLine, DamagedAtRandomIsReadAsJSONWouldBeOrNotAtAll) {
    std::mt19937 random(7);
    const std::vector<std::string> lines = plainLines();
    const std::string letters = " {}[]\",:.-+0123456789aeflnrtuxRSI\\";
    int read = 0;
    for (int round = 0; round < 20'000; ++round) {
        std::string text = lines[random() % lines.size()];
        for (unsigned damages = 1 + random() % 2; damages > 0; --damages) {
            const std::size_t place = random() % text.size();
            text.replace(place, random() % 3, std::string(random() % 2, letters[random() % letters.size()]));
        }
        const auto plain = readPlainLine(text, {});
        if (!plain) continue;
        ++read;
        ASSERT_EQ(described(*plain), described(parseJSONLine(text, {}))) << text;
    }
    EXPECT_GT(read, 1000);
}

TEST(PlainLine, LeavesToJSONWhatNeedsCare) {
    const std::string head = R"({"at": 1.5, "do": "advertise", "name": null, "manufacturerData": )";
    const std::string tail = R"(, "do": "advertise", "name": null, "manufacturerData": null, "RSSI": -60})";
    const std::vector<std::string> lines = {
        R"({"at": 1000000000)" + tail,     // times that a double does not name to the microsecond
        R"({"at": 1.0000001)" + tail,      // finer than a microsecond
        R"({"at": -1.5)" + tail,           // before the start
        R"({"at": 1e3)" + tail,            // another notation
        R"({"at": 01)" + tail,             // no JSON
        R"({"at": 1.)" + tail,             // no JSON
        R"({"at": )" + tail,               // no JSON
        head + R"("FFF", "RSSI": -60})",   // half an octet
        head + R"("FG", "RSSI": -60})",    // no digit
        head + R"("0x", "RSSI": -60})",    // no digit
        head + R"(null, "RSSI": -0})",     // an odd zero
        head + R"(null, "RSSI": -060})",   // no JSON
        head + R"(null, "RSSI": 1000})",   // an odd signal
        head + R"(null, "RSSI": -60.0})",  // no integer
        head + R"(null, "RSSI": })",       // no JSON
        head + R"(null, "RSSI": - 60})",   // no JSON
        head + R"(null, "RSSI": -60}, )",  // something behind it
        head + R"(null, "RSSI": -60,})",   // no JSON
        head + R"(null})",                 // no signal
        head + R"(null, "RSSI": null})",   // no signal
        head + R"(null, "RSSI": -60, "services": null})",
        head + R"(null, "RSSI": -60, "RSSI": -61})",  // a member twice
        head + R"(null, "RSSI": -60, "extra": 1})",   // a member that there is not
        R"({"at": 1.5, "RSSI": -60})",                // it does nothing
        R"({"at": 1.5, "do": "end", "RSSI": -60})",   // it does something else
        R"({})",
        head + R"(null, "RSSI": -60, "services": [,]})",
        head + R"(null, "RSSI": -60, "services": ["a",]})",
    };
    for (const std::string& text : lines) EXPECT_FALSE(readPlainLine(text, {})) << text;
}

}  // namespace

}  // namespace nearcast::lines
