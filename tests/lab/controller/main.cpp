// SPDX-License-Identifier: Apache-2.0
// A Bluetooth controller and the dongles around it, worked by lines on standard input: see Console.h. It ends with its
// input.
#include "lab/controller/Console.h"
#include "lab/controller/VhciDevice.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>

#include <poll.h>
#include <sys/prctl.h>
#include <time.h>
#include <unistd.h>

namespace {

using namespace nearcast::lab;

Time now() {
    timespec time{};
    ::clock_gettime(CLOCK_BOOTTIME, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::duration_cast<Time>(std::chrono::nanoseconds(time.tv_nsec));
}

timespec untilNext(const Console& console) {
    constexpr Time longest = std::chrono::seconds(1);
    const std::optional<Time> next = console.next();
    const Time wait = next ? std::clamp(*next - now(), Time::zero(), longest) : longest;
    return {wait.count() / 1'000'000, (wait.count() % 1'000'000) * 1000};
}

/// Lines of standard input as they come.
class Input {
public:
    /// @return false at its end
    bool read(Console& console) {
        std::array<char, 4096> buffer{};
        const ssize_t got = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (got == 0 || (got < 0 && errno != EINTR)) return false;
        pending_.append(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
        for (std::size_t end = 0; (end = pending_.find('\n')) != std::string::npos; pending_.erase(0, end + 1)) {
            std::printf("%s\n", console.obey(pending_.substr(0, end), now()).c_str());
        }
        std::fflush(stdout);
        return true;
    }

private:
    std::string pending_;
};

void serve(Console& console, VhciDevice& device) {
    Input input;
    for (bool open = true; open;) {
        std::array waits{pollfd{STDIN_FILENO, POLLIN, 0}, pollfd{device.descriptor(), POLLIN, 0}};
        const timespec longest = untilNext(console);
        ::ppoll(waits.data(), waits.size(), &longest, nullptr);
        if (waits[1].revents != 0) {
            device.receive([&console](std::span<const std::uint8_t> command) { console.command(command); });
        }
        console.advance(now());
        if (waits[0].revents != 0) open = input.read(console);
    }
}

}  // namespace

int main() {
    try {
        constexpr unsigned long nanosecond = 1;  // the air does not wait for a machine that would rather sleep
        ::prctl(PR_SET_TIMERSLACK, nanosecond);
        VhciDevice device;
        Console console(device);
        serve(console, device);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "lab_controller: %s\n", error.what());
        return 1;
    }
}
