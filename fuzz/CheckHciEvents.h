// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Expect.h"
#include "platform/hciformat/AdStructures.h"
#include "platform/hciformat/ByteReader.h"
#include "platform/hciformat/HciEvents.h"
#include "support/Utf8.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace nearcast::fuzz {

/// Reads any bytes as HCI events, each with a length in front, one after another with one reader, and checks what has
/// to hold for all of them.
inline void checkHciEvents(std::span<const std::uint8_t> bytes) {
    HciEvents events;
    ByteReader input(bytes);
    while (input.left() > 0) {
        const std::size_t length = input.u8();
        const auto event = input.take(std::min(length, input.left()));
        std::size_t reports = 0;
        const auto outcome = events.read(event, [&](const RawReport& raw) {
            ++reports;
            expect(raw.data.size() <= ReportFragments::longestData, "no advertisement is longer than can be");
            expect(raw.RSSI >= -128 && raw.RSSI <= 127, "a signal is an octet");
            AdvertisingReport report;
            const auto malformedAt = readAdStructures(raw.data, report);
            expect(!malformedAt || *malformedAt < raw.data.size(), "what is malformed lies in the data");
            expect(!report.name || !report.name->empty(), "an empty name is none");
            expect(!report.name || (report.name->back() != 0 && wellFormed(*report.name) == *report.name),
                   "a name is UTF-8, without zeros behind it");
            expect(!report.manufacturerData || report.manufacturerData->size() >= 2, "there is a company");
        });
        expect(outcome != HciEvents::Outcome::other || reports == 0, "other events carry no reports");
        expect(reports * 9 <= event.size(), "no report comes from nowhere");
    }
}

}  // namespace nearcast::fuzz
