// SPDX-License-Identifier: Apache-2.0
// What one advertisement costs, beside the least that it could cost. Prints one line of JSON a figure.
#include "core/HandlerFloor.h"
#include "core/HandlerWorld.h"
#include "core/Runs.h"

#include <barrier>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace nearcast::bench {
namespace {

constexpr double mostTimesTheFloor = 1.5;
constexpr int threadsAtOnce = 8;

void progress(const std::string& what) { std::fprintf(stderr, "%s\n", what.c_str()); }

void ignore(std::string_view, std::int32_t, std::uint64_t, std::int32_t) {}

using Slice = std::span<const Air::Advertisement>;

template <class Handler>
void hearAll(Handler& handler, Slice slice) {
    for (const Air::Advertisement& one : slice) handler.hear(one.payload, one.RSSI);
}

/// The same, all of it from each of eight threads at once.
template <class Handler>
void hearInThreads(Handler& handler, Slice slice) {
    std::barrier start(threadsAtOnce);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadsAtOnce; ++thread) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            hearAll(handler, slice);
        });
    }
    for (std::thread& thread : threads) thread.join();
}

/// One run: both take turns, a slice at a time, so that whatever else the machine does meets both.
/// @return nanoseconds of processor an advertisement, of each
template <class First, class Second>
std::pair<double, double> inTurns(clockid_t clock, const Air& air, First&& first, Second&& second) {
    constexpr std::size_t slices = 20;
    const Slice all(air.advertisements());
    const std::size_t each = all.size() / slices;
    std::pair<double, double> costs;
    for (std::size_t slice = 0; slice < slices; ++slice) {
        const Slice some = all.subspan(slice * each, each);
        costs.first += nanoseconds(clock, [&] { first(some); });
        costs.second += nanoseconds(clock, [&] { second(some); });
    }
    const double count = static_cast<double>(each * slices);
    return {costs.first / count, costs.second / count};
}

/// @param hear  how a handler hears a slice
/// @param times how often it hears it so
template <class Hear>
void besideTheFloor(const Request& request, const std::string& what, std::size_t dongles, std::size_t advertisements,
                    clockid_t clock, Hear&& hear, int times = 1) {
    progress(what);
    const auto addresses = someAddresses(dongles);
    HandlerFloor floor(addresses, ignore);
    HandlerWorld world;
    world.registerAll(addresses);
    const Air first = Air::inTurn(addresses, 7);
    hearAll(floor, first.advertisements());
    hearAll(world, first.advertisements());
    const Air air(addresses, advertisements);
    Line line(what, "ns", mostTimesTheFloor, "ratio");
    for (int run = 0; run < request.runs; ++run) {
        const auto [least, ours] = inTurns(
            clock, air, [&](Slice slice) { hear(floor, slice); }, [&](Slice slice) { hear(world, slice); });
        line.add(ours / times, least / times);
    }
    line.print();
}

void oneThread(const Request& request, std::size_t dongles, std::size_t advertisements) {
    besideTheFloor(request, "handler, " + std::to_string(dongles) + " dongles, random order", dongles, advertisements,
                   CLOCK_THREAD_CPUTIME_ID, [](auto& handler, Slice slice) { hearAll(handler, slice); });
}

void eightThreads(const Request& request, std::size_t advertisements) {
    besideTheFloor(
        request, "handler, 100 dongles, eight threads at once", 100, advertisements, CLOCK_PROCESS_CPUTIME_ID,
        [](auto& handler, Slice slice) { hearInThreads(handler, slice); }, threadsAtOnce);
}

/// Ours beside ours, the one small and the other large.
void growth(const Request& request, const std::string& what, HandlerWorld& small, HandlerWorld& large, const Air& air) {
    Line line(what, "ns", mostTimesTheFloor, "ratio");
    for (int run = 0; run < request.runs; ++run) {
        const auto [least, ours] = inTurns(
            CLOCK_THREAD_CPUTIME_ID, air, [&](Slice slice) { hearAll(small, slice); },
            [&](Slice slice) { hearAll(large, slice); });
        line.add(ours, least);
    }
    line.print();
}

void windows(const Request& request, std::size_t advertisements) {
    constexpr std::size_t larger = 4096;
    progress("handler, window of 4096");
    const auto addresses = someAddresses(100);
    HandlerWorld small(7);
    HandlerWorld large(larger);
    for (HandlerWorld* const world : {&small, &large}) {
        world->registerAll(addresses);
        hearAll(*world, Air::inTurn(addresses, 2 * larger).advertisements());
    }
    growth(request, "handler, window of 4096 beside one of 7, 100 dongles", small, large,
           Air(addresses, advertisements));
}

void registries(const Request& request, std::size_t advertisements, std::size_t registered) {
    progress("handler, large registry");
    const auto all = someAddresses(registered);
    const std::vector<std::uint64_t> addresses(all.begin(), all.begin() + 10);
    HandlerWorld small;
    HandlerWorld large;
    small.registerAll(addresses);
    large.registerAll(all);
    for (HandlerWorld* const world : {&small, &large}) hearAll(*world, Air::inTurn(addresses, 7).advertisements());
    growth(request, "handler, registry of " + std::to_string(registered) + " beside one of 10, 10 dongles", small,
           large, Air(addresses, advertisements));
}

void all(const Request& request) {
    const std::size_t many = request.quick ? 20'000 : 2'000'000;
    oneThread(request, 100, many);
    oneThread(request, 10'000, many);
    oneThread(request, request.quick ? 20'000 : 1'000'000, many);
    eightThreads(request, many / threadsAtOnce);
    windows(request, many / 2);
    registries(request, many / 2, request.quick ? 1'000 : 100'000);
}

}  // namespace
}  // namespace nearcast::bench

int main(int argc, char** argv) { return nearcast::bench::run("handler_bench", argc, argv, nearcast::bench::all); }
