// SPDX-License-Identifier: Apache-2.0
#include "doubles/FaultyPlatform.h"

#include <utility>

namespace nearcast::doubles {

namespace {

using Call = FaultyPlatform::Call;

class FaultyCentral : public CBCentralManager {
public:
    FaultyCentral(FaultyPlatform& platform, std::unique_ptr<CBCentralManager> inner)
        : platform_(platform), inner_(std::move(inner)) {}

    [[nodiscard]] CBManagerState state() const override {
        platform_.enter(Call::state);
        return inner_->state();
    }
    void scanForPeripheralsWithServices(const std::optional<std::vector<CBUUID>>& services,
                                        ScanOptions options) override {
        platform_.enter(Call::scan);
        inner_->scanForPeripheralsWithServices(services, options);
    }
    void stopScan(StopOptions options) override {
        platform_.enter(Call::stop);
        inner_->stopScan(options);
    }

private:
    FaultyPlatform& platform_;
    std::unique_ptr<CBCentralManager> inner_;
};

class FaultyTimer : public NSTimer {
public:
    FaultyTimer(FaultyPlatform& platform, std::shared_ptr<NSTimer> inner)
        : platform_(platform), inner_(std::move(inner)) {}

    void fire() override {
        platform_.enter(Call::fire);
        inner_->fire();
    }
    void invalidate() override {
        platform_.enter(Call::invalidate);
        inner_->invalidate();
    }
    [[nodiscard]] bool isValid() const override { return inner_->isValid(); }

private:
    FaultyPlatform& platform_;
    std::shared_ptr<NSTimer> inner_;
};

}  // namespace

void FaultyPlatform::enter(Call call) {
    int& left = fuse(call);
    if (left > 0 && --left == 0) throw Fault();
}

std::unique_ptr<CBCentralManager> FaultyPlatform::centralManager(CBCentralManagerDelegate& delegate) {
    enter(Call::openRadio);
    return std::make_unique<FaultyCentral>(*this, inner_.centralManager(delegate));
}

NSDate FaultyPlatform::date() const {
    const_cast<FaultyPlatform*>(this)->enter(Call::date);
    return inner_.date();
}

void FaultyPlatform::usleep(std::chrono::microseconds duration) {
    enter(Call::sleep);
    inner_.usleep(duration);
}

std::shared_ptr<NSTimer> FaultyPlatform::scheduledTimer(std::chrono::nanoseconds interval, NSTimer::Handler handler) {
    enter(Call::makeTimer);
    return std::make_shared<FaultyTimer>(*this, inner_.scheduledTimer(interval, std::move(handler)));
}

}  // namespace nearcast::doubles
