// SPDX-License-Identifier: Apache-2.0
// What a trace record costs the thread that takes the step: while nobody listens, and with a file sink.
#include "core/Runs.h"
#include "support/Trace.h"

#include <nearcast/LogWriter.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <barrier>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

namespace nearcast::bench {

namespace {

/// What a record of the handler is made of: two short texts, an address, a number.
[[gnu::noinline]] void recordSite(const Trace& trace, const void* object, std::int32_t RSSI) {
    trace.process("rssi != nil, ", Pointer{object}, ", MACAddr=", "00:11:22:AA:BB:CC", ", RSSI=", RSSI);
}

double off(const Request& request) {
    const int records = request.quick ? 10'000 : 20'000'000;
    const Trace trace(&request, "-[QXNearcastManager centralManager:didDiscoverPeripheral:advertisementData:RSSI:]",
                      Trace::Audience::internal);
    const double all = nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] {
        for (int record = 0; record < records; ++record) recordSite(trace, &request, record);
    });
    return all / records;
}

class TraceFile {
public:
    TraceFile() {
        const int file = mkstemp(path_.data());
        if (file < 0) throw std::runtime_error("no temporary file can be made");
        close(file);
        LogWriter::Options options;
        options.sink = LogWriter::fileSink(path_.data());
        LogWriter::sharedInstance().start(std::move(options));
    }
    ~TraceFile() {
        LogWriter::sharedInstance().stop();
        unlink(path_.data());
    }
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

private:
    std::array<char, 64> path_{"/tmp/nearcast-trace-bench-XXXXXX"};
};

/// Bursts of so many records, each as soon as those before it are in the file: by then the writer's thread waits for
/// more.
/// @return nanoseconds of the caller a record
double on(int bursts, int records) {
    const TraceFile file;
    const Trace trace(&file, "-[QXNearcastManager centralManager:didDiscoverPeripheral:advertisementData:RSSI:]",
                      Trace::Audience::internal);
    double all = 0;
    for (int burst = 0; burst < bursts; ++burst) {
        all += nanoseconds(CLOCK_MONOTONIC, [&] {
            for (int record = 0; record < records; ++record) recordSite(trace, &file, record);
        });
        LogWriter::sharedInstance().flush();
        std::this_thread::yield();
    }
    if (LogWriter::sharedInstance().dropped() != 0) throw std::runtime_error("records were dropped");
    return all / bursts / records;
}

struct Cost {
    double processor = 0;  ///< nanoseconds of the threads a record
    double wall = 0;       ///< the same with what they waited, for each other and for a processor
};

/// Eight threads at once that do nothing else, each with its share of what nearly fills the queue.
Cost together(int bursts) {
    constexpr int threads = 8;
    constexpr int records = 1'000;
    const TraceFile file;
    std::vector<Cost> costs(threads);
    for (int burst = 0; burst < bursts; ++burst) {
        std::barrier start(threads);
        std::vector<std::thread> crowd;
        for (Cost& cost : costs) {
            crowd.emplace_back([&] {
                const Trace trace(&file, "-[QXNearcastManager getRSSI:]", Trace::Audience::publicAPI);
                start.arrive_and_wait();
                cost.wall += nanoseconds(CLOCK_MONOTONIC, [&] {
                    cost.processor += nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] {
                        for (int record = 0; record < records; ++record) recordSite(trace, &file, record);
                    });
                });
            });
        }
        for (std::thread& thread : crowd) thread.join();
        LogWriter::sharedInstance().flush();
    }
    if (LogWriter::sharedInstance().dropped() != 0) throw std::runtime_error("records were dropped");
    Cost all;
    for (const Cost& cost : costs) {
        all.processor += cost.processor / bursts / records / threads;
        all.wall += cost.wall / bursts / records / threads;
    }
    return all;
}

/// One record after the writer's thread has gone to sleep, which it does after a second without work: it is woken.
double afterRest(const Request& request) {
    const TraceFile file;
    const Trace trace(&file, "-[QXNearcastManager stopScan]", Trace::Audience::publicAPI);
    recordSite(trace, &file, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(request.quick ? 10 : 1500));
    return nanoseconds(CLOCK_MONOTONIC, [&] { recordSite(trace, &file, 1); });
}

/// A line without a budget.
void tell(const char* what, std::vector<double> values) {
    std::sort(values.begin(), values.end());
    std::printf(R"({"what": "%s", "unit": "ns", "value": %.0f, "floor": null, "ratio": null, "low": %.0f, )"
                R"("high": %.0f, "runs": %zu, "budget": null, "budget_of": "value"})"
                "\n",
                what, values[values.size() / 2], values.front(), values.back(), values.size());
}

void measure(const Request& request) {
    Line offs("trace off, a record site", "ns", 2, "value");
    Line advertisements("trace into a file, 16 records at a time, each", "ns", 1000, "value");
    Line streams("trace into a file, 8,000 records at a time, each", "ns", 1000, "value");
    Line crowds("trace into a file, eight threads at once, each: processor", "ns", 1000, "value");
    std::vector<double> waited;  // no budget: it is the number of processors that shows
    std::vector<double> rested;  // no budget: it comes once a second at most
    for (int run = 0; run < request.runs; ++run) {
        offs.add(off(request));
        advertisements.add(on(request.quick ? 3 : 5'000, 16));
        streams.add(on(request.quick ? 3 : 20, 8'000));
        const Cost crowd = together(request.quick ? 2 : 20);
        crowds.add(crowd.processor);
        waited.push_back(crowd.wall);
        rested.push_back(afterRest(request));
    }
    offs.print();
    advertisements.print();
    streams.print();
    crowds.print();
    tell("trace into a file, eight threads at once, each: by the wall", waited);
    tell("trace into a file, the first record after a second without", rested);
}

}  // namespace

}  // namespace nearcast::bench

int main(int argc, char** argv) { return nearcast::bench::run("trace_bench", argc, argv, nearcast::bench::measure); }
