// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"

#include <chrono>

namespace nearcast {

namespace {

constexpr int attempts = 10;
constexpr std::chrono::milliseconds pause{100};

/// Whether the state is one that the radio itself vouches for.
bool isDefinite(CBManagerState state) { return state >= CBManagerStateResetting && state <= CBManagerStatePoweredOn; }

}  // namespace

bool Manager::isLECapableHardware() {
    const Trace trace = this->trace("-[QXNearcastManager isLECapableHardware]", Trace::Audience::internal);
    trace.start("");
    const auto state = [this] {
        const CBCentralManager* central = manager.load();
        return central != nullptr ? central->state() : CBManagerStateUnknown;
    };
    for (int i = 0; i < attempts; ++i) {
        trace.process("manager.state: ", state);
        const CBManagerState now = state();
        if (isDefinite(now)) {
            const bool capable = now == CBManagerStatePoweredOn;
            trace.end("-> ", capable);
            return capable;
        }
        if (now == CBManagerStateUnknown) platform_.usleep(pause);
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
