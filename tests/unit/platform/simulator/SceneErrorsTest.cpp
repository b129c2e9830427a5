// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SceneReader.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <limits>
#include <system_error>

namespace nearcast::simulator {

namespace {

/// What the reader says of a text that is no scene.
std::string errorOf(std::string_view text) {
    try {
        readScene(text, "shop.json");
    } catch (const SceneError& error) {
        return error.what();
    }
    return "nothing";
}

/// A scene that is right but for what is put in the place of its parts.
struct Parts {
    std::string floor = R"({"width": 10, "depth": 5})";
    std::string user = R"({"path": [{"at": [1, 2]}]})";
    std::string dongles = "[]";
    std::string more = "";
};

std::string errorOf(const Parts& parts) {
    return errorOf(R"({"floor": )" + parts.floor + R"(, "user": )" + parts.user + R"(, "dongles": )" + parts.dongles +
                   parts.more + "}");
}

struct Case {
    std::string text;
    std::string error;  ///< after the name of the file
};

constexpr const char* one = R"("address": "00:00:00:00:00:01", "at": [2, 3])";

std::string dongleWith(const std::string& members) { return "[{" + std::string(one) + ", " + members + "}]"; }

std::string deviceWith(const std::string& members) { return dongleWith(R"("device": {)" + members + "}"); }

TEST(SceneErrors, HaveNoneForTheSceneThatTheyChange) { EXPECT_EQ(errorOf(Parts{}), "nothing"); }

TEST(SceneErrors, NameTheLineAndColumnOfWhatIsNotJSON) {
    EXPECT_EQ(errorOf("{\n  \"floor\": }").find("shop.json: not JSON at line 2, column "), 0U) << errorOf("{\n}}");
    EXPECT_EQ(errorOf("").find("shop.json: not JSON at line 1, column 1: "), 0U) << errorOf("");
    EXPECT_EQ(errorOf("{\"seed\": 1e999}").find("shop.json: not JSON at line 1"), 0U);
    EXPECT_EQ(errorOf("{\"name\": \"\xFF\"}").find("shop.json: not JSON at line 1"), 0U);
}

TEST(SceneErrors, RefuseNestingWithoutEnd) {
    for (const std::size_t depth : {std::size_t{600}, std::size_t{1'000'000}}) {
        const std::string open(depth, '[');
        EXPECT_EQ(errorOf(open + std::string(depth, ']')).find("shop.json: not JSON at line 1"), 0U);
        EXPECT_EQ(errorOf(open).find("shop.json: not JSON at line 1"), 0U);
    }
    const std::string deep = std::string(300, '[') + std::string(300, ']');
    EXPECT_EQ(errorOf(Parts{.dongles = "[" + deep + "]"}), "shop.json: $.dongles[0]: expected an object");
}

TEST(SceneErrors, NameWhatIsMissing) {
    const Case cases[] = {
        {"[]", "$: expected an object"},
        {"null", "$: expected an object"},
        {"{}", "$.floor: it is missing"},
        {R"({"floor": null})", "$.floor: it is missing"},
        {R"({"floor": {"width": 10, "depth": 5}})", "$.user: it is missing"},
        {R"({"floor": {"width": 10, "depth": 5}, "user": {"path": [{"at": [1, 2]}]}})", "$.dongles: it is missing"},
        {R"({"floor": 7})", "$.floor: expected an object"},
        {R"({"floor": {"depth": 5}})", "$.floor.width: it is missing"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(errorOf(text), "shop.json: " + error) << text;
}

TEST(SceneErrors, NameMembersThatDoNotExist) {
    EXPECT_EQ(errorOf(Parts{.more = R"(, "dongle": [])"}),
              "shop.json: $.dongle: there is no such member (known: name, seed, duration, floor, user, air, receiver, "
              "dongles, radio)");
    EXPECT_EQ(errorOf(Parts{.dongles = dongleWith(R"("colour": 1)")}),
              "shop.json: $.dongles[0].colour: there is no such member (known: address, at, txPower, interval, "
              "payload, off, offEvery, device)");
}

TEST(SceneErrors, ShowStrangeNamesWithoutHarmToATerminal) {
    const auto pathOf = [](const std::string& name) {
        const std::string error = errorOf(Parts{.more = ", \"" + name + "\": 1"});
        return error.substr(0, error.find(": there is no"));
    };
    EXPECT_EQ(pathOf("a b"), R"(shop.json: $["a b"])");
    EXPECT_EQ(pathOf(R"(\u001b[31m\n\")"), R"(shop.json: $["?[31m??"])");
    EXPECT_EQ(pathOf("Küche"), R"(shop.json: $["K??che"])");
    EXPECT_EQ(pathOf(""), R"(shop.json: $[""])");
    EXPECT_EQ(pathOf(std::string(61, 'x')), "shop.json: $[\"" + std::string(60, 'x') + "...\"]");
    EXPECT_EQ(pathOf(std::string(60, 'x')), "shop.json: $." + std::string(60, 'x'));
}

TEST(SceneErrors, NameWhatIsWrongWithTheFloor) {
    const Case cases[] = {
        {R"({"width": "10", "depth": 5})", "$.floor.width: expected a number"},
        {R"({"width": true, "depth": 5})", "$.floor.width: expected a number"},
        {R"({"width": 0.99, "depth": 5})", "$.floor.width: expected a number from 1 to 10000 m, found 0.99"},
        {R"({"width": 10000.5, "depth": 5})", "$.floor.width: expected a number from 1 to 10000 m, found 10000.5"},
        {R"({"width": 10, "depth": -5})", "$.floor.depth: expected a number from 1 to 10000 m, found -5"},
        {R"({"width": 10, "depth": 1e300})", "$.floor.depth: expected a number from 1 to 10000 m, found 1e+300"},
        {R"({"width": 10, "depth": 5, "walls": {}})", "$.floor.walls: expected a list"},
        {R"({"width": 10, "depth": 5, "walls": [{"points": [[0, 0]], "loss": 1}]})",
         "$.floor.walls[0].points: expected a list of at least 2 elements"},
        {R"({"width": 10, "depth": 5, "walls": [{"points": [[0, 0], [1]], "loss": 1}]})",
         "$.floor.walls[0].points[1]: expected a list of 2 elements"},
        {R"({"width": 10, "depth": 5, "walls": [{"points": [[0, 0], [1, 5.1]], "loss": 1}]})",
         "$.floor.walls[0].points[1][1]: expected a number from 0 to 5 m, found 5.1"},
        {R"({"width": 10, "depth": 5, "walls": [{"points": [[0, 0], [1, 5]]}]})",
         "$.floor.walls[0].loss: it is missing"},
        {R"({"width": 10, "depth": 5, "walls": [{"points": [[0, 0], [1, 5]], "loss": -1}]})",
         "$.floor.walls[0].loss: expected a number from 0 to 100 dB, found -1"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(errorOf(Parts{.floor = text}), "shop.json: " + error) << text;
}

TEST(SceneErrors, NameWhatIsWrongWithTheUser) {
    const Case cases[] = {
        {R"({})", "$.user.path: it is missing"},
        {R"({"path": []})", "$.user.path: expected a list of at least 1 element"},
        {R"({"path": [{"at": [1, 2]}, {}]})", "$.user.path[1].at: it is missing"},
        {R"({"path": [{"at": [11, 2]}]})", "$.user.path[0].at[0]: expected a number from 0 to 10 m, found 11"},
        {R"({"path": [{"at": [1, 2, 3]}]})", "$.user.path[0].at: expected a list of 2 elements"},
        {R"({"path": [{"at": [1, 2], "pause": -0.1}]})",
         "$.user.path[0].pause: expected a number from 0 to 86400 s, found -0.1"},
        {R"({"path": [{"at": [1, 2], "facing": 361}]})",
         "$.user.path[0].facing: expected a number from -360 to 360 degrees, found 361"},
        {R"({"path": [{"at": [1, 2]}], "speed": 0})", "$.user.speed: expected a number from 0.01 to 50 m/s, found 0"},
        {R"({"path": [{"at": [1, 2]}], "loop": 1})", "$.user.loop: expected true or false"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(errorOf(Parts{.user = text}), "shop.json: " + error) << text;
}

TEST(SceneErrors, NameWhatIsWrongWithADongle) {
    const Case cases[] = {
        {dongleWith(R"("txPower": "4")"), "$.dongles[0].txPower: expected a number"},
        {dongleWith(R"("txPower": 21)"), "$.dongles[0].txPower: expected a number from -127 to 20 dBm, found 21"},
        {dongleWith(R"("interval": 0.0199)"),
         "$.dongles[0].interval: expected a number from 0.02 to 10485.759375 s, found 0.0199"},
        {dongleWith(R"("payload": "names")"), R"($.dongles[0].payload: expected one of "data", "name", "both")"},
        {dongleWith(R"("off": [[1, 2], [3, 3]])"), "$.dongles[0].off[1]: expected an end after the beginning"},
        {dongleWith(R"("off": [[1, 2.5]], "offEvery": 2)"),
         "$.dongles[0].off[0]: expected an end within offEvery (2 s)"},
        {dongleWith(R"("offEvery": 0)"), "$.dongles[0].offEvery: expected a number from 0.1 to 31536000 s, found 0"},
        {R"([{"at": [2, 3]}])", "$.dongles[0].address: it is missing"},
        {R"([{"address": "00:00:00:00:00:01"}])", "$.dongles[0].at: it is missing"},
        {R"([{"address": "00:00:00:00:00:01", "at": {}}])", "$.dongles[0].at: expected a list"},
    };
    for (const auto& [text, error] : cases) EXPECT_EQ(errorOf(Parts{.dongles = text}), "shop.json: " + error) << text;
}

TEST(SceneErrors, RefuseWhatIsNoAddress) {
    for (const char* address : {"0", "00:00:00:00:00", "00:00:00:00:00:0", "00:00:00:00:00:001", "00:00:00:00:00:0G",
                                "00-00-00-00-00-01", "00:00:00:00:0001:", "000000000001", "00:00:00:00:00:0\\u0000"}) {
        const std::string text = R"([{"address": ")" + std::string(address) + R"(", "at": [2, 3]}])";
        EXPECT_EQ(errorOf(Parts{.dongles = text}),
                  "shop.json: $.dongles[0].address: expected an address of six octets, as in 00:11:22:AA:BB:CC")
            << address;
    }
    EXPECT_EQ(errorOf(Parts{.dongles = R"([{"address": 7, "at": [2, 3]}])"}),
              "shop.json: $.dongles[0].address: expected a text");
}

TEST(SceneErrors, RefuseAnAddressOrPortThatAnotherHas) {
    const std::string addresses = R"([{"address": "00:00:00:00:00:0a", "at": [2, 3]},
                                      {"address": "00:00:00:00:00:0B", "at": [2, 3]},
                                      {"address": "00:00:00:00:00:0A", "at": [4, 3]}])";
    EXPECT_EQ(errorOf(Parts{.dongles = addresses}),
              "shop.json: $.dongles[2].address: it is the same as $.dongles[0].address");
    const std::string ports = R"([{"address": "00:00:00:00:00:0a", "at": [2, 3],
                                   "device": {"portName": "A", "type": "drawer"}},
                                  {"address": "00:00:00:00:00:0b", "at": [2, 3],
                                   "device": {"portName": "A", "type": "printer"}}])";
    EXPECT_EQ(errorOf(Parts{.dongles = ports}),
              "shop.json: $.dongles[1].device.portName: it is the same as $.dongles[0].device.portName");
}

TEST(SceneErrors, NameWhatIsWrongWithADevice) {
    const std::string printer = R"("portName": "A", "type": "printer", )";
    const Case cases[] = {
        {R"("type": "printer")", ".portName: it is missing"},
        {R"("portName": "", "type": "printer")", ".portName: expected a text that is not empty"},
        {R"("portName": ")" + std::string(201, 'x') + "\"", ".portName: expected a text of at most 200 octets"},
        {R"("portName": "A", "type": "Printer")", R"(.type: expected one of "printer", "drawer")"},
        {printer + R"("threshold": -65.5)", ".threshold: expected a whole number, found -65.5"},
        {printer + R"("threshold": 99999999999999999999)",
         ".threshold: expected a number from -127 to 20 dBm, found 1e+20"},
        {printer + R"("nickName": 4)", ".nickName: expected a text"},
        {R"("portName": "A", "type": "drawer", "withDrawer": false)", ".withDrawer: a drawer is always with drawer"},
    };
    for (const auto& [text, error] : cases) {
        EXPECT_EQ(errorOf(Parts{.dongles = deviceWith(text)}), "shop.json: $.dongles[0].device" + error) << text;
    }
}

TEST(SceneErrors, NameWhatIsWrongWithTheRest) {
    const Case cases[] = {
        {R"("seed": -1)", "$.seed: expected a whole number from 0 to 18446744073709551615"},
        {R"("seed": 1.5)", "$.seed: expected a whole number from 0 to 18446744073709551615"},
        {R"("duration": -1)", "$.duration: expected a number from 0 to 31536000 s, found -1"},
        {R"("name": 3)", "$.name: expected a text"},
        {R"("air": {"echo": 0.96})", "$.air.echo: expected a number from 0 to 0.95, found 0.96"},
        {R"("air": {"loss": 1.01})", "$.air.loss: expected a number from 0 to 1, found 1.01"},
        {R"("air": {"placeDistance": 0})", "$.air.placeDistance: expected a number from 0.01 to 1000 m, found 0"},
        {R"("receiver": {"channelTime": 0})", "$.receiver.channelTime: expected a number from 0.001 to 100 s, found 0"},
        {R"("radio": [{"at": 1}])", "$.radio[0].state: it is missing"},
        {R"("radio": [{"at": 1, "state": 4}])",
         R"($.radio[0].state: expected one of "unknown", "resetting", "unsupported", "unauthorized", "poweredOff", )"
         R"("poweredOn")"},
        {R"("radio": [{"at": 1, "state": "poweredOff"}, {"at": 1, "state": "poweredOn"}])",
         "$.radio[1].at: expected a time after the one before it (1)"},
    };
    for (const auto& [text, error] : cases)
        EXPECT_EQ(errorOf(Parts{.more = ", " + text}), "shop.json: " + error) << text;
}

TEST(SceneErrors, RefuseMoreDonglesThanTheLimit) {
    const auto donglesOf = [](int count) {
        std::string text = "[";
        for (int index = 0; index < count; ++index) {
            char dongle[80];
            std::snprintf(dongle, sizeof dongle, R"(%s{"address": "00:00:00:00:%02X:%02X", "at": [1, 1]})",
                          index == 0 ? "" : ",", index / 256, index % 256);
            text += dongle;
        }
        return text + "]";
    };
    EXPECT_EQ(errorOf(Parts{.dongles = donglesOf(10'000)}), "nothing");
    EXPECT_EQ(errorOf(Parts{.dongles = donglesOf(10'001)}),
              "shop.json: $.dongles: expected a list of at most 10000 elements");
}

TEST(SceneErrors, RefuseNumbersThatAreNone) {
    for (const double number : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                                -std::numeric_limits<double>::infinity()}) {
        const SettingValue scene(SettingValue::Dictionary{
            {"floor", SettingValue(SettingValue::Dictionary{{"width", SettingValue(number)}})}});
        try {
            sceneFrom(scene, "shop.json");
            ADD_FAILURE() << "took " << number;
        } catch (const SceneError& error) {
            EXPECT_EQ(std::string(error.what()).find("shop.json: $.floor.width: expected a number from"), 0U)
                << error.what();
        }
    }
}

std::string fileErrorOf(const std::string& path) {
    try {
        readSceneFile(path);
    } catch (const SceneError& error) {
        return error.what();
    } catch (const std::system_error& error) {
        return std::string("the system: ") + error.what();
    }
    return "nothing";
}

TEST(SceneErrors, NameTheFileThatCannotBeRead) {
    EXPECT_EQ(fileErrorOf("/nowhere/shop.json"),
              "the system: /nowhere/shop.json: cannot be opened: No such file or directory");
    EXPECT_EQ(fileErrorOf("/"), "the system: /: cannot be read: Is a directory");
    EXPECT_EQ(fileErrorOf("/dev/zero"), "/dev/zero: larger than 16 MiB");
    EXPECT_EQ(fileErrorOf("/dev/null").find("/dev/null: not JSON at line 1, column 1: "), 0U);
}

}  // namespace

}  // namespace nearcast::simulator
