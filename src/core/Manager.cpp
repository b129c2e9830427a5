// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"

namespace nearcast {

namespace {
constexpr std::uint64_t samplingNumberAtStart = 7;
}

Manager::Manager(const void* face, PlatformServices& platform) : face_(face), platform_(platform) {}

Manager::~Manager() = default;

void Manager::openRadio() {
    try {
        ownedManager_ = platform_.centralManager(*this);
    } catch (...) {
        initialised_.store(false);
        throw;
    }
    manager.store(ownedManager_.get());
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

}  // namespace nearcast
