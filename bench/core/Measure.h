// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::bench {

/// The command line of a measuring program: --runs N, --quick.
struct Options {
    int runs = 5;
    bool quick = false;

    Options(int argc, char** argv) {
        for (int index = 1; index < argc; ++index) {
            const std::string_view word = argv[index];
            if (word == "--quick") {
                quick = true;
            } else if (word == "--runs" && index + 1 < argc && std::atoi(argv[index + 1]) > 0) {
                runs = std::atoi(argv[++index]);
            } else {
                std::fprintf(stderr, "usage: %s [--runs N] [--quick]\n", argv[0]);
                std::exit(2);
            }
        }
    }
};

/// @param values not empty
inline double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 != 0 ? values[half] : (values[half - 1] + values[half]) / 2;
}

/// Nanoseconds that `work` takes by the wall.
template <class Work>
double wallNanoseconds(Work&& work) {
    const auto begin = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - begin).count();
}

/// Nanoseconds that `work` has the processor: for what neither waits nor blocks the same, but less of what else the
/// machine does.
template <class Work>
double processorNanoseconds(Work&& work) {
    const auto now = [] {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return 1e9 * static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec);
    };
    const double begin = now();
    work();
    return now() - begin;
}

/// Keeps the compiler from leaving out what makes `value`.
template <class Value>
void keep(const Value& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

/// Writes one line of the table for a figure without a floor (tools/bench_table.py says what a line holds).
/// @param values one for each run
inline void printValue(std::string_view what, std::string_view unit, const std::vector<double>& values, double budget) {
    const auto [low, high] = std::minmax_element(values.begin(), values.end());
    std::printf(R"({"what": "%.*s", "unit": "%.*s", "value": %.6g, "floor": null, "ratio": null, "low": %.6g, )"
                R"("high": %.6g, "runs": %zu, "budget": %g, "budget_of": "value"})"
                "\n",
                static_cast<int>(what.size()), what.data(), static_cast<int>(unit.size()), unit.data(), median(values),
                *low, *high, values.size(), budget);
    std::fflush(stdout);
}

}  // namespace nearcast::bench
