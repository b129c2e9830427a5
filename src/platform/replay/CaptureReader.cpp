// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/CaptureReader.h"

#include "platform/hciformat/AdStructures.h"
#include "platform/replay/RecordingNotes.h"
#include "support/Utf8.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace nearcast::replay {

namespace {

// Up to here a time in a line of JSON, which is read as a double, names each microsecond.
constexpr std::chrono::microseconds latest = std::chrono::seconds(4'000'000'000);

}  // namespace

std::string wellFormed(const std::string& text) {
    std::string result;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t length = characterLength(rest);
        const bool lone = length == 1 && (static_cast<unsigned char>(rest[0]) & 0x80) != 0;
        result += lone ? std::string_view("\xEF\xBF\xBD") : rest.substr(0, length);
        rest.remove_prefix(length);
    }
    return result;
}

std::optional<RecordedItem> CaptureReader::next() {
    while (ready_.empty()) {
        const auto packet = packets_->next();
        if (!packet) return std::nullopt;
        advance(*packet);
        if (auto item = itemOfNote(*packet, now_)) {
            ready_.push_back(std::move(*item));
            continue;
        }
        decoder_.read(*packet, [this](const RawReport& raw) { add(raw); });
    }
    RecordedItem item = std::move(ready_.front());
    ready_.pop_front();
    return item;
}

void CaptureReader::advance(const Packet& packet) {
    if (!packet.nanoseconds) return;
    if (!first_) first_ = packet.nanoseconds;
    // Unsigned, for a damaged file may hold any two times.
    const auto passed = static_cast<std::int64_t>(static_cast<std::uint64_t>(*packet.nanoseconds) -
                                                  static_cast<std::uint64_t>(*first_));
    const std::chrono::microseconds rounded(passed / 1000 + (passed % 1000 >= 500 ? 1 : 0));
    now_ = std::clamp(rounded, now_, latest);
}

void CaptureReader::add(const RawReport& raw) {
    RecordedReport recorded;
    recorded.at = now_;
    recorded.malformed = readReport(raw, recorded.report).has_value();
    if (recorded.report.name) recorded.report.name = wellFormed(*recorded.report.name);
    senders_.complete(recorded.report);
    ready_.emplace_back(std::move(recorded));
}

}  // namespace nearcast::replay
