// SPDX-License-Identifier: Apache-2.0
#include "platform/hciformat/ReportFragments.h"

#include <algorithm>
#include <utility>

namespace nearcast {

namespace {

void append(std::vector<std::uint8_t>& data, std::span<const std::uint8_t> piece) {
    const std::size_t room = ReportFragments::longestData - data.size();
    const auto fitting = piece.first(std::min(piece.size(), room));
    data.insert(data.end(), fitting.begin(), fitting.end());
}

}  // namespace

std::deque<ReportFragments::Unfinished>::iterator ReportFragments::find(const Key& key) {
    return std::find_if(unfinished_.begin(), unfinished_.end(), [&](const Unfinished& one) { return one.key == key; });
}

void ReportFragments::add(const Key& key, std::span<const std::uint8_t> piece) {
    auto found = find(key);
    if (found == unfinished_.end()) {
        if (unfinished_.size() == mostUnfinished) unfinished_.pop_front();
        found = unfinished_.insert(unfinished_.end(), Unfinished{key, {}});
    }
    append(found->data, piece);
}

std::optional<std::vector<std::uint8_t>> ReportFragments::finish(const Key& key, std::span<const std::uint8_t> last) {
    const auto found = find(key);
    if (found == unfinished_.end()) return std::nullopt;
    std::vector<std::uint8_t> data = std::move(found->data);
    unfinished_.erase(found);
    append(data, last);
    return data;
}

}  // namespace nearcast
