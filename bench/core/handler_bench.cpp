// SPDX-License-Identifier: Apache-2.0
// What one advertisement costs, beside the least that it could cost. Prints one line of JSON a figure.
#include "core/HandlerFloor.h"
#include "core/HandlerWorld.h"
#include "core/Runs.h"

#include <barrier>
#include <cstdio>
#include <exception>
#include <functional>
#include <thread>

namespace nearcast::bench {
namespace {

constexpr double mostTimesTheFloor = 1.5;

void progress(const std::string& what) { std::fprintf(stderr, "%s\n", what.c_str()); }

void ignore(std::string_view, std::int32_t, std::uint64_t, std::int32_t) {}

/// Nanoseconds an advertisement.
template <class Handler>
double costOf(Handler& handler, const Air& air) {
    const double all = nanoseconds([&] {
        for (const Air::Advertisement& one : air.advertisements()) handler.hear(one.payload, one.RSSI);
    });
    return all / static_cast<double>(air.advertisements().size());
}

/// The same, all of it from each of eight threads at once; wall time an advertisement.
template <class Handler>
double costInThreads(Handler& handler, const Air& air, int count) {
    std::barrier start(count + 1);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < count; ++thread) {
        threads.emplace_back([&] {
            start.arrive_and_wait();
            for (const Air::Advertisement& one : air.advertisements()) handler.hear(one.payload, one.RSSI);
        });
    }
    const double all = nanoseconds([&] {
        start.arrive_and_wait();
        for (std::thread& thread : threads) thread.join();
    });
    return all / static_cast<double>(air.advertisements().size()) / count;
}

template <class Handler>
void warmUp(Handler& handler, const Air& air) {
    for (const Air::Advertisement& one : air.advertisements()) handler.hear(one.payload, one.RSSI);
}

void besideTheFloor(const Request& request, std::size_t dongles, std::size_t advertisements) {
    progress("handler, " + std::to_string(dongles) + " dongles");
    const auto addresses = someAddresses(dongles);
    HandlerFloor floor(addresses, ignore);
    HandlerWorld world;
    world.registerAll(addresses);
    const Air first = Air::inTurn(addresses, 7);
    warmUp(floor, first);
    warmUp(world, first);
    const Air air(addresses, advertisements);
    Line line("handler, " + std::to_string(dongles) + " dongles, random order", "ns", mostTimesTheFloor, "ratio");
    for (int run = 0; run < request.runs; ++run) {
        const double least = costOf(floor, air);
        line.add(costOf(world, air), least);
    }
    line.print();
}

void inThreads(const Request& request, std::size_t advertisements) {
    constexpr int threads = 8;
    progress("handler, eight threads");
    const auto addresses = someAddresses(100);
    HandlerFloor floor(addresses, ignore);
    HandlerWorld world;
    world.registerAll(addresses);
    const Air first = Air::inTurn(addresses, 7);
    warmUp(floor, first);
    warmUp(world, first);
    const Air air(addresses, advertisements);
    Line line("handler, 100 dongles, eight threads at once", "ns", mostTimesTheFloor, "ratio");
    for (int run = 0; run < request.runs; ++run) {
        const double least = costInThreads(floor, air, threads);
        line.add(costInThreads(world, air, threads), least);
    }
    line.print();
}

/// Ours beside ours, the one small and the other large.
void growth(const Request& request, const std::string& what, HandlerWorld& small, HandlerWorld& large, const Air& air) {
    Line line(what, "ns", mostTimesTheFloor, "ratio");
    for (int run = 0; run < request.runs; ++run) {
        const double least = costOf(small, air);
        line.add(costOf(large, air), least);
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
        warmUp(*world, Air::inTurn(addresses, 2 * larger));
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
    for (HandlerWorld* const world : {&small, &large}) warmUp(*world, Air::inTurn(addresses, 7));
    growth(request, "handler, registry of " + std::to_string(registered) + " beside one of 10, 10 dongles", small,
           large, Air(addresses, advertisements));
}

void all(const Request& request) {
    const std::size_t many = request.quick ? 20'000 : 2'000'000;
    besideTheFloor(request, 100, many);
    besideTheFloor(request, 10'000, many);
    besideTheFloor(request, request.quick ? 20'000 : 1'000'000, many);
    inThreads(request, many / 8);
    windows(request, many / 2);
    registries(request, many / 2, request.quick ? 1'000 : 100'000);
}

}  // namespace
}  // namespace nearcast::bench

int main(int argc, char** argv) {
    try {
        nearcast::bench::all(nearcast::bench::Request::of(argc, argv));
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "handler_bench: %s\n", problem.what());
        return 2;
    }
    return 0;
}
