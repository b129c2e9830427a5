// SPDX-License-Identifier: Apache-2.0
// Saving and loading a registry of 100,000 devices: through the manager, its lock and its JSON. Each run is a process
// of its own, as an application is that starts and loads what it knows: in one that has loaded and saved many times,
// memory lies scattered.
#include "core/Manager.h"
#include "core/Runs.h"
#include "platform/json/JSONSerialization.h"
#include "platform/virtual/VirtualPlatform.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <exception>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::bench {

namespace {

class QuietConsole : public Console {
public:
    void NSLog(std::string_view line) noexcept override {
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
    }
};

/// A saved registry, each key that there is, every fourth name with a letter beyond ASCII. It is written here as text,
/// so that the memory of this process stays as it was at its start.
std::string blobOf(std::uint32_t devices) {
    std::string blob = "{";
    for (std::uint32_t device = 0; device < devices; ++device) {
        std::array<char, 512> text{};
        std::snprintf(text.data(), text.size(),
                      R"(%s
  "BT:Printer %06u": {
    "Device Type": "%s",
    "MAC Address": "02:4E:43:%02X:%02X:%02X",
    "Nick Name": "%s %u",
    "Port Settings": "mini;speed=115200",
    "Threshold RSSI": %d,
    "With Drawer": %s
  })",
                      device == 0 ? "" : ",", device, device % 2 == 0 ? "Printer" : "TF-Tillfox", device >> 16U & 0xFFU,
                      device >> 8U & 0xFFU, device & 0xFFU, device % 4 == 0 ? "Küche" : "Counter", device,
                      -40 - static_cast<int>(device % 50), device % 2 == 0 ? "false" : "true");
        blob += text.data();
    }
    return blob + "\n}";
}

struct Shop {
    QuietConsole console;
    JSONSerialization JSON;
    VirtualPlatform platform{console, JSON};
    Manager manager{this, platform};

    Shop() { manager.init(); }
};

/// Milliseconds of processor time.
struct Figures {
    double loading = 0;
    double saving = 0;
};

/// Loads the registry in place of the one before it, and saves it again.
Figures round(Shop& shop, const std::string& blob) {
    bool loaded = false;
    std::optional<std::string> saved;
    Figures figures;
    figures.loading = nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] { loaded = shop.manager.deserializeSettings(blob); });
    figures.saving = nanoseconds(CLOCK_THREAD_CPUTIME_ID, [&] { saved = shop.manager.serializedSettings(); });
    if (!loaded || saved != blob) throw std::runtime_error("what was saved is not what was loaded");
    return {figures.loading / 1e6, figures.saving / 1e6};
}

/// Lets `work` give its result from a process of its own.
template <class Work>
auto apart(Work work) {
    int ends[2];
    if (pipe(ends) != 0) throw std::runtime_error("no pipe can be made");
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process can be made");
    decltype(work()) result{};
    if (child == 0) {
        result = work();
        _exit(write(ends[1], &result, sizeof result) == sizeof result ? 0 : 1);
    }
    close(ends[1]);
    const bool read = ::read(ends[0], &result, sizeof result) == sizeof result;
    close(ends[0]);
    int status = 0;
    if (waitpid(child, &status, 0) != child || status != 0 || !read) throw std::runtime_error("a run failed");
    return result;
}

struct Rounds {
    Figures first;
    Figures last;
};

Rounds rounds(const std::string& blob) {
    Shop shop;
    Rounds figures;
    figures.first = round(shop, blob);
    for (int left = 9; left > 0; --left) figures.last = round(shop, blob);
    return figures;
}

void tell(const char* what, std::vector<double> values) {
    std::sort(values.begin(), values.end());
    std::printf(R"({"what": "%s", "unit": "ms", "value": %.4g, "floor": null, "ratio": null, "low": %.4g, )"
                R"("high": %.4g, "runs": %zu, "budget": null, "budget_of": "value"})"
                "\n",
                what, values[values.size() / 2], values.front(), values.back(), values.size());
}

void measure(const Request& request) {
    const std::string blob = blobOf(request.quick ? 1'000 : 100'000);
    Line loading("loading a registry of 100,000", "ms", 500, "value");
    Line saving("saving a registry of 100,000", "ms", 500, "value");
    std::vector<double> loadingAgain;
    std::vector<double> savingAgain;
    for (int run = 0; run < request.runs; ++run) {
        const Rounds figures = apart([&] { return rounds(blob); });
        loading.add(figures.first.loading);
        saving.add(figures.first.saving);
        loadingAgain.push_back(figures.last.loading);
        savingAgain.push_back(figures.last.saving);
    }
    loading.print();
    saving.print();
    tell("loading it for the tenth time in one process", loadingAgain);
    tell("saving it for the tenth time in one process", savingAgain);
}

}  // namespace

}  // namespace nearcast::bench

int main(int argc, char** argv) {
    return nearcast::bench::run("persistence_bench", argc, argv, nearcast::bench::measure);
}
