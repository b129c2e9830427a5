// SPDX-License-Identifier: Apache-2.0
#include "proximity/SignalTable.h"

namespace nearcast {

void SignalTable::erase(std::size_t place) {
    AddressText space;
    Signal& gone = signals_[place];
    index_.erase(gone.address(space));
    if (&gone != &signals_.back()) {
        gone = std::move(signals_.back());
        index_.assign(gone.address(space), &gone);
    }
    signals_.pop_back();
}

}  // namespace nearcast
