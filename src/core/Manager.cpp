// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"

#include "support/log/LogOutput.h"

#include <chrono>
#include <exception>
#include <system_error>

namespace nearcast {

namespace {

constexpr std::uint64_t samplingNumberAtStart = 7;
constexpr int readinessAttempts = 10;
constexpr std::chrono::milliseconds readinessPause{100};

/// Whether the radio itself vouches for the state: all but unknown, and numbers that mean nothing.
bool isDefinite(CBManagerState state) { return state >= CBManagerStateResetting && state <= CBManagerStatePoweredOn; }

}  // namespace

Manager::Manager(const void* face, PlatformServices& platform) : face_(face), platform_(platform) {}

Manager::~Manager() = default;

void Manager::openRadio() {
    try {
        ownedManager_ = platform_.centralManager(*this);
    } catch (const std::exception& error) {
        failToOpen(error.what());
        throw;
    } catch (...) {
        failToOpen("an exception of an unknown kind");
        throw;
    }
    manager.store(ownedManager_.get());
}

void Manager::failToOpen(std::string_view why) {
    initialised_.store(false);
    platform_.radioFailed(why);
}

void Manager::init() {
    const Trace trace = this->trace("-[QXNearcastManager init]", Trace::Audience::internal);
    trace.start("");
    if (!initialised_.exchange(true)) {
        trace.process("self != nil: ", Pointer{face_});
        openRadio();
        _samplingNumber.store(samplingNumberAtStart);
    }
    trace.end("-> ", Pointer{face_});
}

// Threads that trace wait for a synchronous sink whatever they hold, and all of them would for as long.
void Manager::checkSleep() const {
    if (!LogOutput::insideDirectSink() && platform_.canSleep()) return;
    throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                            "an operation that takes time, called where other threads wait for this one");
}

bool Manager::isLECapableHardware() {
    const Trace trace = this->trace("-[QXNearcastManager isLECapableHardware]", Trace::Audience::internal);
    trace.start("");
    const auto state = [this] {
        const CBCentralManager* central = manager.load();
        return central != nullptr ? central->state() : CBManagerStateUnknown;
    };
    for (int i = 0; i < readinessAttempts; ++i) {
        trace.process("manager.state: ", state);
        const CBManagerState now = state();
        if (isDefinite(now)) {
            const bool capable = now == CBManagerStatePoweredOn;
            trace.end("-> ", capable);
            return capable;
        }
        if (now != CBManagerStateUnknown) continue;
        checkSleep();
        platform_.usleep(readinessPause);
    }
    trace.end("-> ", false);
    return false;
}

void Manager::centralManagerDidUpdateState(CBCentralManager& central) {
    const Trace trace = this->trace("-[QXNearcastManager centralManagerDidUpdateState:]", Trace::Audience::internal);
    trace.start("-> ", Pointer{&central});
    trace.end("-> ", Pointer{&central});
}

}  // namespace nearcast
