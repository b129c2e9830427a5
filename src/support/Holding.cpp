// SPDX-License-Identifier: Apache-2.0
#include "support/Holding.h"

#include <memory>
#include <utility>

namespace nearcast {

void Holding::afterwards(std::function<void()> task) {
    if (!any()) return task();
    auto& waiting = holding::ofThread.waiting;
    if (waiting == nullptr) waiting = new holding::Tasks;
    waiting->push_back(std::move(task));
}

void Holding::runWaiting() noexcept {
    const std::unique_ptr<holding::Tasks> waiting(std::exchange(holding::ofThread.waiting, nullptr));
    for (const auto& task : *waiting) task();
}

}  // namespace nearcast
