// SPDX-License-Identifier: Apache-2.0
#include <nearcast/QXNearcastManager.h>

#include "core/Manager.h"
#include "support/Holding.h"
#include "support/log/LogOutput.h"

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace nearcast {

namespace {

QXNearcastManager* sharedInstance = nullptr;  // guarded by the monitor

// Set with the monitor held.
std::atomic<bool> making{false};      ///< the manager is being made, and by the same thread
std::atomic<bool> allocating{false};  ///< its storage is

/// The class's monitor, for a scope. Recursive, because making the manager allocates it while the monitor is held.
class Monitor {
public:
    /// @throws std::system_error (`resource_deadlock_would_occur`) inside a synchronous sink while another thread makes
    ///         the manager, which traces and so waits for that sink
    Monitor() {
        if (!LogOutput::insideDirectSink()) {
            mutex().lock();
            return;
        }
        while (!mutex().try_lock()) {
            if (making || allocating) {
                throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                                        "the manager is being made by a thread that waits for this one");
            }
            std::this_thread::yield();
        }
    }
    ~Monitor() { mutex().unlock(); }
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

private:
    /// Never destroyed: threads may still ask for the manager while the process ends.
    static std::recursive_mutex& mutex() {
        static auto* const one = new std::recursive_mutex;
        return *one;
    }

    const Holding holding_;
};

/// Sets a flag for a scope.
class Set {
public:
    explicit Set(std::atomic<bool>& flag) : flag_(flag) { flag_ = true; }
    ~Set() { flag_ = false; }
    Set(const Set&) = delete;
    Set& operator=(const Set&) = delete;

private:
    std::atomic<bool>& flag_;
};

/// What trace records of class operations name as their object.
const void* classObject() { return &sharedInstance; }

constexpr auto publicAPI = Trace::Audience::publicAPI;
constexpr auto internal = Trace::Audience::internal;

}  // namespace

// Making the one object, and the operations that would copy or end it.
QXNearcastManager::QXNearcastManager() : manager_(std::make_unique<Manager>(this, currentPlatform())) {}

QXNearcastManager::~QXNearcastManager() = default;

QXNearcastManager& QXNearcastManager::sharedManager() {
    const Trace trace(classObject(), "+[QXNearcastManager sharedManager]", publicAPI);
    trace.start("");
    QXNearcastManager* instance = nullptr;
    {
        const Monitor monitor;
        if (sharedInstance == nullptr) {
            if (making || allocating) throw std::logic_error("the manager was asked for while it is being made");
            const Set set(making);
            trace.process("sharedInstance == nil, ", Pointer{sharedInstance});
            allocWithZone(nullptr);  // none where the sink of that record was quicker
            sharedInstance->init();
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
        const Monitor monitor;
        if (sharedInstance == nullptr && !allocating) {
            const Set set(allocating);
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

// What the application calls: the manager behind the face does it.
std::shared_ptr<QXNearcastManagerDelegate> QXNearcastManager::delegate() const { return manager_->delegate(); }

void QXNearcastManager::setDelegate(std::shared_ptr<QXNearcastManagerDelegate> delegate) {
    manager_->setDelegate(std::move(delegate));
}

std::uint64_t QXNearcastManager::samplingNumber() const noexcept { return manager_->samplingNumber(); }

void QXNearcastManager::addSettingForPrinterPortName(Text portName, Text portSettings, bool useDrawer, Text MACAddr,
                                                     std::optional<double> Threshold, Text nickName) {
    manager_->addSettingForPrinterPortName(portName, portSettings, useDrawer, MACAddr, Threshold, nickName);
}

void QXNearcastManager::addSettingForTFTillfoxPortName(Text portName, Text portSettings, Text MACAddr,
                                                       std::optional<double> Threshold, Text nickName) {
    manager_->addSettingForTFTillfoxPortName(portName, portSettings, MACAddr, Threshold, nickName);
}

void QXNearcastManager::removeSettingWithPortName(Text portName) { manager_->removeSettingWithPortName(portName); }

std::shared_ptr<const Settings> QXNearcastManager::getSettings() { return manager_->getSettings(); }

void QXNearcastManager::setSettings(std::optional<Settings> settings) { manager_->setSettings(std::move(settings)); }

std::optional<std::string> QXNearcastManager::serializedSettings() { return manager_->serializedSettings(); }

bool QXNearcastManager::deserializeSettings(std::optional<std::string_view> data) {
    return manager_->deserializeSettings(data);
}

bool QXNearcastManager::startScan() { return manager_->startScan(); }

bool QXNearcastManager::startScan(std::uint64_t samplingNumber) { return manager_->startScan(samplingNumber); }

void QXNearcastManager::stopScan() { manager_->stopScan(); }

std::int32_t QXNearcastManager::calibrateActionArea(Text MACAddr) { return manager_->calibrateActionArea(MACAddr); }

std::int32_t QXNearcastManager::getRSSI(Text MACAddr) { return manager_->getRSSI(MACAddr); }

}  // namespace nearcast
