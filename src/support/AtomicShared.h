// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <thread>
#include <utility>

namespace nearcast {

/// A shared pointer that several threads may read and replace at once.
///
/// It stands in for `std::atomic<std::shared_ptr>`, whose locked bit the thread sanitizer of GCC 12 and clang 14 cannot
/// follow. A flag is held for a few instructions; no user code runs while it is held, and replaced objects are
/// destroyed after it is released. Code that needs the object for a moment only borrows it: that takes the flag twice
/// and counts under it, which is half of what a copy costs.
template <class T>
class AtomicShared {
    struct Holder {
        std::shared_ptr<T> object;
        std::size_t borrowed = 0;
        bool replaced = false;
    };

public:
    /// Keeps what it borrowed alive, whatever is stored meanwhile. For a scope of one thread.
    class Borrowed {
    public:
        explicit Borrowed(const AtomicShared& place) : place_(place), holder_(place.borrow()) {}
        ~Borrowed() { place_.giveBack(holder_); }
        Borrowed(const Borrowed&) = delete;
        Borrowed& operator=(const Borrowed&) = delete;

        [[nodiscard]] T* get() const noexcept { return holder_ == nullptr ? nullptr : holder_->object.get(); }
        /// Reads anew. As long as nothing was stored, that costs one load.
        void reload() {
            // A holder that is borrowed is not destroyed, so no other one can be in its place.
            if (place_.current_.load(std::memory_order_acquire) == holder_) return;
            place_.giveBack(std::exchange(holder_, nullptr));
            holder_ = place_.borrow();
        }

    private:
        const AtomicShared& place_;
        Holder* holder_;
    };

    AtomicShared() = default;
    ~AtomicShared() { delete current_.load(); }
    AtomicShared(const AtomicShared&) = delete;
    AtomicShared& operator=(const AtomicShared&) = delete;

    [[nodiscard]] std::shared_ptr<T> load() const {
        const Flag flag(busy_);
        const Holder* const holder = current_.load(std::memory_order_relaxed);
        return holder == nullptr ? nullptr : holder->object;
    }

    /// Whether it holds nothing, at the cost of one load.
    [[nodiscard]] bool empty() const noexcept { return current_.load(std::memory_order_acquire) == nullptr; }

    void store(std::shared_ptr<T> next) {
        auto holder = next == nullptr ? nullptr : std::make_unique<Holder>(Holder{std::move(next)});
        std::unique_ptr<Holder> last;
        const Flag flag(busy_);
        last = replace(holder.release());
    }

    /// Empties it where it still holds `expected`.
    void clearIf(const std::shared_ptr<T>& expected) {
        std::unique_ptr<Holder> last;
        const Flag flag(busy_);
        const Holder* const holder = current_.load(std::memory_order_relaxed);
        if (holder != nullptr && holder->object == expected) last = replace(nullptr);
    }

private:
    /// A thread that finds it taken waits for one that is a few instructions from releasing it, or that has lost its
    /// processor: it yields its own, and after a while it sleeps.
    class Flag {
    public:
        explicit Flag(std::atomic<bool>& busy) : busy_(busy) {
            constexpr int yields = 100;
            for (int tries = 0; busy_.exchange(true, std::memory_order_acquire); ++tries) {
                if (tries < yields) {
                    std::this_thread::yield();
                } else {
                    std::this_thread::sleep_for(std::chrono::microseconds(50));
                }
            }
        }
        ~Flag() { busy_.store(false, std::memory_order_release); }
        Flag(const Flag&) = delete;
        Flag& operator=(const Flag&) = delete;

    private:
        std::atomic<bool>& busy_;
    };

    [[nodiscard]] Holder* borrow() const {
        const Flag flag(busy_);
        Holder* const holder = current_.load(std::memory_order_relaxed);
        if (holder != nullptr) ++holder->borrowed;
        return holder;
    }
    void giveBack(Holder* holder) const {
        if (holder == nullptr) return;
        std::unique_ptr<Holder> last;
        const Flag flag(busy_);
        if (--holder->borrowed == 0 && holder->replaced) last.reset(holder);
    }
    /// With the flag held.
    /// @return the last holder where it is not borrowed; otherwise its last borrower destroys it
    std::unique_ptr<Holder> replace(Holder* next) {
        Holder* const last = current_.exchange(next, std::memory_order_acq_rel);
        if (last == nullptr || last->borrowed == 0) return std::unique_ptr<Holder>(last);
        last->replaced = true;
        return nullptr;
    }

    mutable std::atomic<bool> busy_{false};
    std::atomic<Holder*> current_{nullptr};
};

}  // namespace nearcast
