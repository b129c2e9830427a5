// SPDX-License-Identifier: Apache-2.0
// What a trace record costs the thread that takes the step: while nobody listens, and with a file sink.
#include "core/Measure.h"
#include "support/Trace.h"

#include <nearcast/LogWriter.h>

#include <unistd.h>

#include <array>
#include <cstdint>
#include <stdexcept>
#include <thread>

namespace nearcast::bench {

namespace {

/// What a record of the handler is made of: two short texts, an address, a number.
[[gnu::noinline]] void recordSite(const Trace& trace, const void* object, std::int32_t RSSI) {
    trace.process("rssi != nil, ", Pointer{object}, ", MACAddr=", "00:11:22:AA:BB:CC", ", RSSI=", RSSI);
}

double off(const Options& options) {
    const int records = options.quick ? 10'000 : 20'000'000;
    const Trace trace(&options, "-[QXNearcastManager centralManager:didDiscoverPeripheral:advertisementData:RSSI:]",
                      Trace::Audience::internal);
    const double all = processorNanoseconds([&] {
        for (int record = 0; record < records; ++record) recordSite(trace, &options, record);
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
        all += wallNanoseconds([&] {
            for (int record = 0; record < records; ++record) recordSite(trace, &file, record);
        });
        LogWriter::sharedInstance().flush();
        std::this_thread::yield();
    }
    if (LogWriter::sharedInstance().dropped() != 0) throw std::runtime_error("records were dropped");
    return all / bursts / records;
}

/// One record after the writer's thread has gone to sleep.
double afterRest(const Options& options) {
    const TraceFile file;
    const Trace trace(&file, "-[QXNearcastManager stopScan]", Trace::Audience::publicAPI);
    recordSite(trace, &file, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(options.quick ? 10 : 1500));
    return wallNanoseconds([&] { recordSite(trace, &file, 1); });
}

}  // namespace

}  // namespace nearcast::bench

int main(int argc, char** argv) {
    using namespace nearcast::bench;
    const Options options(argc, argv);
    std::vector<double> offs;
    std::vector<double> advertisements;
    std::vector<double> streams;
    std::vector<double> rested;
    for (int run = 0; run < options.runs; ++run) {
        offs.push_back(off(options));
        advertisements.push_back(on(options.quick ? 3 : 5'000, 16));
        streams.push_back(on(options.quick ? 3 : 20, 8'000));
        rested.push_back(afterRest(options));
    }
    printValue("trace off, a record site", "ns", offs, 2);
    printValue("trace into a file, 16 records at a time, each", "ns", advertisements, 1000);
    printValue("trace into a file, 8,000 records at a time, each", "ns", streams, 1000);
    printValue("trace into a file, a single record after a rest", "ns", rested, 1000);
}
