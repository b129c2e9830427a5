// SPDX-License-Identifier: Apache-2.0
#include "contract/CallbackBench.h"

#include <nearcast/LogWriter.h>
#include <nearcast/Platform.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::contract {
namespace {

using Clock = CallbackBench::Clock;
using Operation = void (*)(CallbackBench& bench);

void useRegistry(CallbackBench& bench) {
    auto& manager = bench.manager();
    try {
        manager.addSettingForPrinterPortName("P", {}, false, "00:00:00:00:00:01", {}, {});
        manager.addSettingForTFTillfoxPortName("T", {}, "00:00:00:00:00:02", {}, {});
    } catch (const PortException&) {  // another one has been here
    }
    manager.setSettings(*manager.getSettings());
    manager.deserializeSettings(manager.serializedSettings());
    manager.removeSettingWithPortName("P");
    manager.removeSettingWithPortName("T");
}

void startAndStop(CallbackBench& bench) {
    bench.manager().stopScan();
    bench.manager().startScan(1);
}

void startWithoutState(CallbackBench& bench) {
    struct Unknown {
        explicit Unknown(VirtualRadio& one) : radio(one) { radio.setState(CBManagerStateUnknown); }
        ~Unknown() { radio.setState(CBManagerStatePoweredOn); }
        VirtualRadio& radio;
    } const unknown(bench.radio());
    bench.manager().startScan();
}

void calibrate(CallbackBench& bench) {
    bench.manager().stopScan();
    bench.manager().calibrateActionArea("00:11:22:AA:BB:CC");
}

void readPlatform(CallbackBench& /*bench*/) {
    (void)Platform::radioHealth();
    (void)Platform::now();
    (void)Platform::failure();
    Platform::setTap({});
    Platform::interrupt();
}

void startAndStopWriter(CallbackBench& /*bench*/) {
    LogWriter::Options options;
    options.sink = [](const LogRecord& /*record*/) {};
    LogWriter::sharedInstance().start(std::move(options));
    LogWriter::sharedInstance().stop();
}

void useNearest(CallbackBench& bench) {
    bench.nearest().update();
    bench.nearest().refresh();
    (void)bench.nearest().choice();
    (void)bench.nearest().explain();
}

const std::map<std::string, Operation>& operations() {
    static const std::map<std::string, Operation> all{
        {"sharedManager", [](CallbackBench& /*bench*/) { QXNearcastManager::sharedManager(); }},
        {"the registry", useRegistry},
        {"startScan, stopScan", startAndStop},
        {"startScan without a state", startWithoutState},
        {"calibrateActionArea", calibrate},
        {"getRSSI", [](CallbackBench& bench) { bench.manager().getRSSI("00:11:22:AA:BB:CC"); }},
        {"delegate, samplingNumber",
         [](CallbackBench& bench) {
             bench.manager().setDelegate(bench.manager().delegate());
             (void)bench.manager().samplingNumber();
         }},
        {"Platform::radioHealth and the like", readPlatform},
        {"Platform::runFor", [](CallbackBench& /*bench*/) { Platform::runFor(0.001); }},
        {"LogWriter::start, stop", startAndStopWriter},
        {"Nearest", useNearest},
    };
    return all;
}

/// A cell of the table in docs/callbacks.md.
struct Cell {
    std::string operation;
    std::string callback;
    std::string word;
    friend void PrintTo(const Cell& cell, std::ostream* out) { *out << cell.word; }
};

std::vector<std::string> cellsOf(const std::string& line) {
    std::vector<std::string> cells;
    for (std::size_t from = 1; from < line.size();) {
        const std::size_t to = std::min(line.find('|', from), line.size());
        std::string cell = line.substr(from, to - from);
        cell.erase(std::remove(cell.begin(), cell.end(), '`'), cell.end());
        const auto first = cell.find_first_not_of(' ');
        cells.push_back(first == std::string::npos ? "" : cell.substr(first, cell.find_last_not_of(' ') + 1 - first));
        from = to + 1;
    }
    return cells;
}

/// The cells of its first table.
std::vector<Cell> page() {
    std::ifstream file(std::string(NEARCAST_TEST_SOURCE_DIR) + "/../docs/callbacks.md");
    std::vector<Cell> cells;
    std::vector<std::string> callbacks;
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with("|")) {
            if (callbacks.empty()) continue;
            break;
        }
        const auto row = cellsOf(line);
        if (callbacks.empty()) {
            callbacks = row;
        } else if (!line.starts_with("|---")) {
            for (std::size_t place = 1; place < row.size(); ++place) {
                cells.push_back({row[0], callbacks.at(place), row[place]});
            }
        }
    }
    return cells;
}

/// The page says what each callback may call. Each cell in a process of its own, for there is one manager in it.
class Callback : public testing::TestWithParam<Cell> {
protected:
    ~Callback() override {
        if (bench_ != nullptr) bench_->end();
    }
    Callback() = default;
    Callback(const Callback&) = delete;
    Callback& operator=(const Callback&) = delete;

    void open(Clock clock) { bench_ = new CallbackBench(clock); }
    std::string outcome() {
        const Operation operation = operations().at(GetParam().operation);
        return bench_->outcome(GetParam().callback, [operation] { operation(*bench_); });
    }

    static inline CallbackBench* bench_ = nullptr;  // the manager's for the rest of the process
};

TEST_P(Callback, MayCallWhatThePageSaysAlsoAmongOtherThreads) {
    const std::string& word = GetParam().word;
    const std::string alone = word == "error" ? "error" : "yes";
    open(Clock::machine);
    EXPECT_EQ(outcome(), alone);
    bench_->gather();
    constexpr int enough = 20;
    for (int round = 0; round < 5 || bench_->turns() < enough; ++round) {
        const std::string among = outcome();
        if (word == "free" && among == "error") continue;
        EXPECT_EQ(among, alone);
    }
}

std::string nameOf(const testing::TestParamInfo<Cell>& cell) {
    std::string name = cell.param.operation + " in " + cell.param.callback;
    std::string result;
    bool begins = true;
    for (const char letter : name) {
        if (std::isalnum(static_cast<unsigned char>(letter)) == 0) {
            begins = true;
            continue;
        }
        result += begins ? static_cast<char>(std::toupper(static_cast<unsigned char>(letter))) : letter;
        begins = false;
    }
    return result;
}

INSTANTIATE_TEST_SUITE_P(Page, Callback, testing::ValuesIn(page()), nameOf);

std::vector<Cell> timed() {
    std::vector<Cell> cells = page();
    cells.erase(std::remove_if(cells.begin(), cells.end(), [](const Cell& cell) { return cell.word != "time"; }),
                cells.end());
    return cells;
}

class CallbackInTime : public Callback {};

TEST_P(CallbackInTime, IsRefusedWhatWouldWaitForAClockThatAnotherThreadMakesGo) {
    open(Clock::own);
    EXPECT_EQ(outcome(), "error");
}

INSTANTIATE_TEST_SUITE_P(Page, CallbackInTime, testing::ValuesIn(timed()), nameOf);

TEST(CallbackPage, HasARowForEveryOperationAndAWordInEveryCell) {
    const auto cells = page();
    constexpr std::size_t callbacks = 9;
    EXPECT_EQ(cells.size(), operations().size() * callbacks);
    for (const Cell& cell : cells) {
        EXPECT_EQ(operations().count(cell.operation), 1U) << cell.operation;
        EXPECT_TRUE(cell.word == "yes" || cell.word == "error" || cell.word == "free" || cell.word == "time")
            << cell.word;
    }
    EXPECT_FALSE(timed().empty());
}

}  // namespace
}  // namespace nearcast::contract
