// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"

#include <mutex>

namespace nearcast {

namespace {

QXNearcastManager* sharedInstance = nullptr;  // guarded by the monitor

/// The class's monitor. Recursive, because making the manager allocates it while the monitor is held. Never destroyed:
/// threads may still ask for the manager while the process ends.
std::recursive_mutex& monitor() {
    static auto* const mutex = new std::recursive_mutex;
    return *mutex;
}

/// What trace records of class operations name as their object.
const void* classObject() { return &sharedInstance; }

constexpr auto publicAPI = Trace::Audience::publicAPI;
constexpr auto internal = Trace::Audience::internal;

}  // namespace

QXNearcastManager& QXNearcastManager::sharedManager() {
    const Trace trace(classObject(), "+[QXNearcastManager sharedManager]", publicAPI);
    trace.start("");
    QXNearcastManager* instance = nullptr;
    {
        const std::lock_guard lock(monitor());
        if (sharedInstance == nullptr) {
            trace.process("sharedInstance == nil, ", Pointer{sharedInstance});
            sharedInstance = allocWithZone(nullptr)->init();
        }
        instance = sharedInstance;
    }
    trace.end("-> ", Pointer{instance});
    return *instance;
}

QXNearcastManager* QXNearcastManager::allocWithZone(void* zone) {
    const Trace trace(classObject(), "+[QXNearcastManager allocWithZone:]", internal);
    trace.start("", Pointer{zone});
    {
        const std::lock_guard lock(monitor());
        if (sharedInstance == nullptr) {
            trace.process("sharedInstance == nil, ", Pointer{sharedInstance});
            sharedInstance = new QXNearcastManager;
            trace.end("", Pointer{zone}, ", -> ", Pointer{sharedInstance});
            return sharedInstance;
        }
    }
    trace.end("", Pointer{zone}, ", -> ", Pointer{nullptr});
    return nullptr;
}

QXNearcastManager* QXNearcastManager::init() {
    manager_->init();
    return this;
}

QXNearcastManager* QXNearcastManager::copyWithZone(void* zone) {
    const Trace trace(this, "-[QXNearcastManager copyWithZone:]", internal);
    trace.start("", Pointer{zone});
    trace.end("", Pointer{zone}, ", -> ", Pointer{this});
    return this;
}

QXNearcastManager* QXNearcastManager::retain() {
    const Trace trace(this, "-[QXNearcastManager retain]", internal);
    trace.start("");
    trace.end("-> ", Pointer{this});
    return this;
}

std::uint64_t QXNearcastManager::retainCount() {
    const Trace trace(this, "-[QXNearcastManager retainCount]", internal);
    constexpr std::uint64_t always = UINT32_MAX;
    trace.start("");
    trace.end("-> ", static_cast<std::int32_t>(always));
    return always;
}

void QXNearcastManager::release() {
    const Trace trace(this, "-[QXNearcastManager release]", internal);
    trace.start("");
    trace.end("");
}

QXNearcastManager* QXNearcastManager::autorelease() {
    const Trace trace(this, "-[QXNearcastManager autorelease]", internal);
    trace.start("");
    trace.end("-> ", Pointer{this});
    return this;
}

}  // namespace nearcast
