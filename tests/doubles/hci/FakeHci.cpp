// SPDX-License-Identifier: Apache-2.0
#include "doubles/hci/FakeHci.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <deque>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::hci {

/// What the machine and the ways to it share.
struct FakeHci::State {
    State() : descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
        if (descriptor < 0) throw std::runtime_error("no event descriptor");
    }
    ~State() { close(descriptor); }
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void push(Octets packet) NEARCAST_REQUIRES(mutex) {
        if (!open) return;
        packets.push_back(std::move(packet));
        eventfd_write(descriptor, 1);
    }
    void serve() NEARCAST_REQUIRES(mutex) {
        if (service && switchesOn && given && plugged && !open && !blocked) up = true;
        given = false;
    }
    void lose(int error) NEARCAST_REQUIRES(mutex) {
        if (!open) return;
        lost = error;
        eventfd_write(descriptor, 1);
    }

    const int descriptor;
    mutable Mutex mutex;
    std::condition_variable done;
    FakeController controller NEARCAST_GUARDED_BY(mutex);
    bool plugged NEARCAST_GUARDED_BY(mutex) = true;
    int index NEARCAST_GUARDED_BY(mutex) = 0;
    int nextIndex NEARCAST_GUARDED_BY(mutex) = 0;
    std::vector<HciAdapter> others NEARCAST_GUARDED_BY(mutex);
    bool up NEARCAST_GUARDED_BY(mutex) = false;
    bool service NEARCAST_GUARDED_BY(mutex) = false;
    bool switchesOn NEARCAST_GUARDED_BY(mutex) = false;
    bool given NEARCAST_GUARDED_BY(mutex) = false;  ///< the service has got the controller, and not yet looked at it
    bool linked NEARCAST_GUARDED_BY(mutex) = false;
    bool discovers NEARCAST_GUARDED_BY(mutex) = false;
    int serviceAsked NEARCAST_GUARDED_BY(mutex) = 0;
    bool otherScans NEARCAST_GUARDED_BY(mutex) = false;
    HciBlock blocked NEARCAST_GUARDED_BY(mutex);
    Capabilities capabilities NEARCAST_GUARDED_BY(mutex){true, true};
    int openError NEARCAST_GUARDED_BY(mutex) = 0;
    int askError NEARCAST_GUARDED_BY(mutex) = 0;
    int writeError NEARCAST_GUARDED_BY(mutex) = 0;
    bool open NEARCAST_GUARDED_BY(mutex) = false;
    HciAccess access NEARCAST_GUARDED_BY(mutex) = HciAccess::alone;
    int opens NEARCAST_GUARDED_BY(mutex) = 0;
    int lost NEARCAST_GUARDED_BY(mutex) = 0;  ///< the open socket's error
    std::deque<Octets> packets NEARCAST_GUARDED_BY(mutex);
};

namespace {

using StatePointer = std::shared_ptr<FakeHci::State>;

class FakeSocket : public HciSocket {
public:
    explicit FakeSocket(StatePointer state) : state_(std::move(state)) {}
    ~FakeSocket() override {
        const MutexLock lock(state_->mutex);
        state_->open = false;
        state_->given = state_->plugged && state_->access == HciAccess::alone;
        state_->packets.clear();
        state_->done.notify_all();
    }
    FakeSocket(const FakeSocket&) = delete;
    FakeSocket& operator=(const FakeSocket&) = delete;

    Received read() override {
        const MutexLock lock(state_->mutex);
        state_->done.notify_all();
        if (state_->packets.empty()) {
            eventfd_t ignored = 0;
            eventfd_read(state_->descriptor, &ignored);
            return {{}, std::exchange(state_->lost, 0)};
        }
        packet_ = std::move(state_->packets.front());
        state_->packets.pop_front();
        return {packet_, 0};
    }

    int write(std::span<const std::uint8_t> packet) override {
        const MutexLock lock(state_->mutex);
        if (state_->writeError != 0) return state_->writeError;
        if (!state_->plugged) return ENODEV;
        for (Octets& answer : state_->controller.take(packet)) state_->push(std::move(answer));
        state_->done.notify_all();
        return 0;
    }

    [[nodiscard]] int descriptor() const override { return state_->descriptor; }

private:
    const StatePointer state_;
    Octets packet_;
};

class FakePort : public HciPort {
public:
    explicit FakePort(StatePointer state) : state_(std::move(state)) {}

    Opened open(int index, HciAccess access) override {
        const MutexLock lock(state_->mutex);
        const int error = refusal(index, access);
        state_->done.notify_all();
        if (error != 0) return {nullptr, error};
        state_->open = true;
        state_->access = access;
        state_->lost = 0;
        ++state_->opens;
        return {std::make_unique<FakeSocket>(state_), 0};
    }

    Asked adapter(int index) override {
        const MutexLock lock(state_->mutex);
        state_->done.notify_all();
        if (const int error = std::exchange(state_->askError, 0)) return {std::nullopt, error};
        for (HciAdapter& adapter : all()) {
            if (adapter.index == index) return {std::move(adapter), 0};
        }
        return {std::nullopt, ENODEV};
    }

    HciAdapterList adapters() override {
        const MutexLock lock(state_->mutex);
        state_->done.notify_all();
        if (const int error = std::exchange(state_->askError, 0)) return {{}, error};
        return {all(), 0};
    }

    bool hasLinks(int index) override {
        const MutexLock lock(state_->mutex);
        return index == state_->index && state_->linked;
    }

    [[nodiscard]] Capabilities capabilities() const override {
        const MutexLock lock(state_->mutex);
        return state_->capabilities;
    }

private:
    [[nodiscard]] std::vector<HciAdapter> all() const NEARCAST_REQUIRES(state_->mutex) {
        std::vector<HciAdapter> adapters = state_->others;
        if (!state_->plugged) return adapters;
        HciAdapter& adapter = adapters.emplace_back();
        adapter.index = state_->index;
        adapter.name = "hci" + std::to_string(state_->index);
        adapter.address = alice;
        adapter.bus = "USB";
        adapter.up = state_->up;
        adapter.blocked = state_->blocked;
        return adapters;
    }
    [[nodiscard]] bool hasOther(int index) const NEARCAST_REQUIRES(state_->mutex) {
        return std::any_of(state_->others.begin(), state_->others.end(),
                           [index](const HciAdapter& other) { return other.index == index; });
    }

    /// In the kernel's order (`hci_sock_bind` of Linux 6.1).
    [[nodiscard]] int refusal(int index, HciAccess access) const NEARCAST_REQUIRES(state_->mutex) {
        if (const int error = std::exchange(state_->openError, 0)) return error;
        const bool alone = access == HciAccess::alone;
        if (!(alone ? state_->capabilities.netAdmin : state_->capabilities.netRaw)) return EPERM;
        if (hasOther(index)) return EBUSY;
        if (index != state_->index || !state_->plugged) return ENODEV;
        if (!alone) return 0;
        if (state_->up) return EBUSY;
        return state_->blocked ? ERFKILL : 0;
    }

    const StatePointer state_;
};

class FakeService : public AdapterService {
public:
    explicit FakeService(StatePointer state) : state_(std::move(state)) {}

    bool turnsOn(const std::string& adapter) override {
        const MutexLock lock(state_->mutex);
        ++state_->serviceAsked;
        return shows(adapter) && !state_->up && state_->switchesOn;
    }
    bool turnOff(const std::string& adapter) override {
        const MutexLock lock(state_->mutex);
        if (!shows(adapter) || state_->discovers) return false;
        state_->up = false;
        return true;
    }
    void leaveOff(const std::string& adapter) override {
        {
            const MutexLock lock(state_->mutex);
            state_->serve();
        }
        turnOff(adapter);
    }

private:
    [[nodiscard]] bool shows(const std::string& adapter) const NEARCAST_REQUIRES(state_->mutex) {
        return state_->service && state_->plugged && !state_->open && adapter == "hci" + std::to_string(state_->index);
    }

    const StatePointer state_;
};

}  // namespace

FakeHci::FakeHci() : state_(std::make_shared<State>()) {}

std::unique_ptr<HciPort> FakeHci::port() const { return std::make_unique<FakePort>(state_); }

std::unique_ptr<AdapterService> FakeHci::service() const { return std::make_unique<FakeService>(state_); }

void FakeHci::plug() {
    const MutexLock lock(state_->mutex);
    if (!state_->plugged) state_->index = state_->nextIndex;
    state_->plugged = true;
    state_->given = true;
    state_->controller.reset();
}

void FakeHci::unplug() {
    const MutexLock lock(state_->mutex);
    state_->plugged = false;
    state_->up = false;
    state_->lose(EPIPE);
}

void FakeHci::use(bool up) {
    const MutexLock lock(state_->mutex);
    state_->up = up;
}

void FakeHci::block(HciBlock blocked) {
    const MutexLock lock(state_->mutex);
    if (state_->open && state_->access == HciAccess::alone) return;
    state_->blocked = blocked;
    if (blocked) state_->up = false;
}

void FakeHci::cutOff() {
    const MutexLock lock(state_->mutex);
    state_->blocked.hard = true;
    state_->up = false;
    state_->controller.reset();
    if (state_->access == HciAccess::alone) state_->lose(ENETDOWN);
}

void FakeHci::allow(Capabilities capabilities) {
    const MutexLock lock(state_->mutex);
    state_->capabilities = capabilities;
}

void FakeHci::breakSockets(int error) {
    const MutexLock lock(state_->mutex);
    state_->lose(error);
}

void FakeHci::number(int index) {
    const MutexLock lock(state_->mutex);
    state_->nextIndex = index;
}

void FakeHci::addOther(HciAdapter adapter) {
    const MutexLock lock(state_->mutex);
    adapter.name = "hci" + std::to_string(adapter.index);
    adapter.up = true;
    state_->others.push_back(std::move(adapter));
}

void FakeHci::runService(bool switchesOn) {
    const MutexLock lock(state_->mutex);
    state_->service = true;
    state_->switchesOn = switchesOn;
}

void FakeHci::serve() {
    const MutexLock lock(state_->mutex);
    state_->serve();
}

void FakeHci::link(bool linked) {
    const MutexLock lock(state_->mutex);
    state_->linked = linked;
}

void FakeHci::discover(bool active) {
    const MutexLock lock(state_->mutex);
    state_->discovers = active;
}

void FakeHci::failNextOpen(int error) {
    const MutexLock lock(state_->mutex);
    state_->openError = error;
}

void FakeHci::failNextQuestion(int error) {
    const MutexLock lock(state_->mutex);
    state_->askError = error;
}

void FakeHci::failWrites(int error) {
    const MutexLock lock(state_->mutex);
    state_->writeError = error;
}

void FakeHci::advertise(const LegacyReport& report) {
    const MutexLock lock(state_->mutex);
    if (!state_->plugged) return;
    if (state_->open && state_->access == HciAccess::beside) {
        if (state_->up && state_->otherScans) state_->push(hex("04") + legacyEvent({report}));
    } else if (auto packet = state_->controller.hear(report)) {
        state_->push(std::move(*packet));
    }
}

void FakeHci::othersScan(bool scan) {
    const MutexLock lock(state_->mutex);
    state_->otherScans = scan;
}

void FakeHci::send(const Octets& packet) {
    const MutexLock lock(state_->mutex);
    state_->push(packet);
}

void FakeHci::controller(const std::function<void(FakeController&)>& change) {
    const MutexLock lock(state_->mutex);
    change(state_->controller);
}

bool FakeHci::scans() {
    const MutexLock lock(state_->mutex);
    return state_->controller.scans();
}

int FakeHci::count(std::uint16_t opcode) {
    const MutexLock lock(state_->mutex);
    return state_->controller.count(opcode);
}

bool FakeHci::opened() const {
    const MutexLock lock(state_->mutex);
    return state_->open;
}

int FakeHci::opens() const {
    const MutexLock lock(state_->mutex);
    return state_->opens;
}

bool FakeHci::up() const {
    const MutexLock lock(state_->mutex);
    return state_->up;
}

int FakeHci::serviceAsked() const {
    const MutexLock lock(state_->mutex);
    return state_->serviceAsked;
}

bool FakeHci::waits() const {
    const MutexLock lock(state_->mutex);
    return state_->open && (!state_->packets.empty() || state_->lost != 0);
}

void FakeHci::await(const std::function<bool(FakeController&)>& condition) {
    MutexLock lock(state_->mutex);
    while (!condition(state_->controller)) state_->done.wait(lock.native());
}

}  // namespace nearcast::hci
