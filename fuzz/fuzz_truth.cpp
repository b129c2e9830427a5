// SPDX-License-Identifier: Apache-2.0
// Any bytes as a truth file.
#include "Expect.h"
#include "MemoryFile.h"
#include "lines/TextReader.h"
#include "lines/Truth.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <span>
#include <string>

namespace nearcast::fuzz {

namespace {

using namespace lines;

void checkMarks(const Truth& truth) {
    expect(!truth.empty(), "a truth has a mark");
    for (std::size_t place = 0; place < truth.size(); ++place) {
        expect(std::isfinite(truth[place].at), "a mark has a time");
        if (place == 0) continue;
        expect(truth[place - 1].at < truth[place].at, "each mark has a time of its own, in order");
        expect(truth[place - 1].line < truth[place].line, "marks are in the order of their lines");
    }
}

void checkChanges(const Truth& truth) {
    const Truth changes = changesOf(truth);
    expect(changes.front() == truth.front(), "the first mark is a change");
    for (std::size_t place = 1; place < changes.size(); ++place) {
        expect(changes[place - 1].MACAddr != changes[place].MACAddr, "a change changes something");
    }
    expect(changesOf(changes) == changes, "the changes of changes are the same");
}

void checkWriting(const Truth& truth) {
    std::string text;
    for (const TruthMark& mark : truth) {
        const nlohmann::json where = mark.MACAddr.empty() ? nlohmann::json() : nlohmann::json(mark.MACAddr);
        text += nlohmann::json{{"at", mark.at}, {"truth", where}}.dump() + "\n";
    }
    const MemoryFile file({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    expect(readTruth(file.path()) == truth, "what is written again is the same truth");
}

void checkTruth(std::span<const std::uint8_t> bytes) {
    const MemoryFile file(bytes);
    Truth truth;
    try {
        truth = readTruth(file.path());
    } catch (const InputError& problem) {
        expect(std::string(problem.what()).starts_with(file.path() + ":"), "the message names the file");
        return;
    }
    checkMarks(truth);
    checkChanges(truth);
    checkWriting(truth);
}

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkTruth({data, size});
    return 0;
}
