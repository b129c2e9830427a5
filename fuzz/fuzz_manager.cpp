// SPDX-License-Identifier: Apache-2.0
// Any sequence of the manager's operations, of what its radio hears and becomes, and of time that passes, beside the
// plain model: event by event, with trace and locks. The input decides what the generator of scenarios leaves to
// chance.
#include "Expect.h"
#include "doubles/ModelManager.h"
#include "fuzz/ManagerPlay.h"
#include "scenario/EventComparer.h"
#include "scenario/ScenarioGenerator.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::fuzz {

namespace {

using namespace scenario;

/// Without asking for the manager, which a process has once.
std::vector<std::string> scenarioOf(std::span<const std::uint8_t> bytes) {
    std::vector<std::string> lines = ScenarioGenerator(Random(bytes)).lines();
    std::erase_if(lines, [](const std::string& line) { return line.find("sharedManager") != std::string::npos; });
    return lines;
}

void checkManager(std::span<const std::uint8_t> bytes) {
    const auto lines = scenarioOf(bytes);
    const std::string shown = ManagerPlay().play(lines);
    const auto problem = difference(readEvents(shown), doubles::ModelManager::run(lines));
    if (!problem) return;
    std::string text = *problem + "\n";
    for (const std::string& line : lines) text += line + "\n";
    expect(false, text.c_str());
}

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::checkManager({data, size});
    return 0;
}
