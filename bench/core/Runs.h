// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::bench {

/// How a measuring program was called: `--runs N` (5), `--quick`.
struct Request {
    int runs = 5;
    bool quick = false;  ///< small, to see that it runs; the figures mean nothing

    static Request of(int argc, char** argv) {
        Request request;
        for (int place = 1; place < argc; ++place) {
            const std::string_view word = argv[place];
            if (word == "--quick") {
                request.quick = true;
            } else if (word == "--runs" && place + 1 < argc) {
                request.runs = std::stoi(argv[++place]);
            } else {
                throw std::invalid_argument("usage: [--runs N] [--quick]");
            }
        }
        if (request.runs < 1) throw std::invalid_argument("--runs: at least 1");
        return request;
    }
};

/// One line of the table: runs of ours and, where there is one, of the floor, one after the other.
class Line {
public:
    Line(std::string what, std::string unit, double budget, std::string budgetOf)
        : what_(std::move(what)), unit_(std::move(unit)), budget_(budget), budgetOf_(std::move(budgetOf)) {}

    void add(double value, std::optional<double> floor = std::nullopt) {
        values_.push_back(value);
        if (!floor) return;
        floors_.push_back(*floor);
        ratios_.push_back(value / *floor);
    }

    void print() const {
        const auto& judged = budgetOf_ == "ratio" ? ratios_ : values_;
        const auto [low, high] = std::minmax_element(judged.begin(), judged.end());
        std::printf(
            R"({"what": "%s", "unit": "%s", "value": %.4g, "floor": %s, "ratio": %s, "low": %.4g, "high": %.4g, )"
            R"("runs": %zu, "budget": %g, "budget_of": "%s"})"
            "\n",
            what_.c_str(), unit_.c_str(), median(values_), number(floors_).c_str(), number(ratios_).c_str(), *low,
            *high, values_.size(), budget_, budgetOf_.c_str());
        std::fflush(stdout);
    }

private:
    static double median(std::vector<double> figures) {
        std::sort(figures.begin(), figures.end());
        const std::size_t middle = figures.size() / 2;
        return figures.size() % 2 == 1 ? figures[middle] : (figures[middle - 1] + figures[middle]) / 2;
    }
    static std::string number(const std::vector<double>& figures) {
        if (figures.empty()) return "null";
        char text[32];
        std::snprintf(text, sizeof text, "%.4g", median(figures));
        return text;
    }

    std::string what_;
    std::string unit_;
    double budget_;
    std::string budgetOf_;
    std::vector<double> values_;
    std::vector<double> floors_;
    std::vector<double> ratios_;
};

/// The whole of a measuring program's `main`. Gives its exit status: 2 where it cannot measure.
template <class Measure>
int run(const char* program, int argc, char** argv, Measure&& measure) {
    try {
        measure(Request::of(argc, argv));
        return 0;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s: %s\n", program, problem.what());
        return 2;
    }
}

/// Nanoseconds of processor that `work` takes, by one of the clocks that count them: other programs that run at the
/// same time do not.
template <class Work>
double nanoseconds(clockid_t clock, Work&& work) {
    const auto now = [clock] {
        timespec time{};
        clock_gettime(clock, &time);
        return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
    };
    const double begin = now();
    work();
    return now() - begin;
}

}  // namespace nearcast::bench
