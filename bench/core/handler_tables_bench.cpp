// SPDX-License-Identifier: Apache-2.0
// What the tables behind an advertisement cost: memory, registering, the sweep. Prints one line of JSON a figure.
#include "core/HandlerWorld.h"
#include "core/Runs.h"

#include <malloc.h>

#include <cstdio>
#include <exception>
#include <string>
#include <unordered_map>

namespace nearcast::bench {
namespace {

constexpr double nanosecondsInMillisecond = 1e6;

void progress(const std::string& what) { std::fprintf(stderr, "%s\n", what.c_str()); }

/// Bytes that the heap has given out.
double heapInUse() {
    const auto heap = mallinfo2();
    return static_cast<double>(heap.uordblks + heap.hblkhd);
}

/// Bytes a dongle that a plain table of the standard library takes, with nothing in its nodes.
double plainNode(const std::vector<std::uint64_t>& addresses) {
    struct Nothing {};
    const double before = heapInUse();
    std::unordered_map<std::string, Nothing> table;
    for (const std::uint64_t address : addresses) table.emplace(AddressText(address).view(), Nothing());
    return (heapInUse() - before) / static_cast<double>(addresses.size());
}

/// Bytes a dongle that the manager takes.
double inTheTable(const std::vector<std::uint64_t>& addresses) {
    HandlerWorld world;
    const Air air = Air::inTurn(addresses, 14);
    const double before = heapInUse();
    world.hear(air);
    return (heapInUse() - before) / static_cast<double>(addresses.size());
}

void memory(const Request& request, std::size_t dongles) {
    progress("memory of a dongle");
    const auto addresses = someAddresses(dongles);
    Line line("memory of a dongle in the table beyond the library's node, window 7", "bytes", 200, "value");
    for (int run = 0; run < request.runs; ++run) line.add(inTheTable(addresses) - plainNode(addresses));
    line.print();
}

void registering(const Request& request, std::size_t devices) {
    progress("registering");
    const auto addresses = someAddresses(devices);
    Line line("registering " + std::to_string(devices) + " devices one by one", "s", 0.5, "value");
    for (int run = 0; run < request.runs; ++run) {
        HandlerWorld world;
        line.add(nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] { world.registerAll(addresses); }) / 1e9);
    }
    line.print();
}

void sweeping(const Request& request, std::size_t dongles) {
    progress("sweep");
    const auto addresses = someAddresses(dongles);
    const std::string entries = std::to_string(dongles) + " entries";
    Line fresh("sweep over " + entries + ", none stale", "ms", 5, "value");
    Line stale("sweep over " + entries + ", all stale, empty delegate", "ms", 100, "value");
    HandlerWorld world;
    world.registerAll(addresses);
    const Air air = Air::inTurn(addresses, 7);
    const auto sweep = [&] {
        return nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] { world.manager().eventRepeatTimer(); }) /
               nanosecondsInMillisecond;
    };
    for (int run = 0; run < request.runs; ++run) {
        world.hear(air);
        fresh.add(sweep());
        world.platform().ahead += std::chrono::hours(1);
        stale.add(sweep());
    }
    fresh.print();
    stale.print();
}

void all(const Request& request) {
    const std::size_t many = request.quick ? 1'000 : 100'000;
    memory(request, many);
    registering(request, many);
    sweeping(request, many);
}

}  // namespace
}  // namespace nearcast::bench

int main(int argc, char** argv) {
    return nearcast::bench::run("handler_tables_bench", argc, argv, nearcast::bench::all);
}
