// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include <optional>
#include <string>
#include <string_view>

namespace nearcast {

/// Values to JSON and back.
class NSJSONSerialization {
public:
    virtual ~NSJSONSerialization() = default;

    /// Whether the value can be written: all numbers finite, all text UTF-8, no bytes.
    [[nodiscard]] virtual bool isValidJSONObject(const SettingValue& value) const = 0;
    /// The value as indented JSON. Only for values that can be written.
    [[nodiscard]] virtual std::string dataWithJSONObject(const SettingValue& value) const = 0;
    /// The value that the buffer holds, fragments allowed, or nothing when it is not strict JSON (RFC 8259) in UTF-8.
    /// A byte order mark is passed over; a repeated key keeps its last value; numbers beyond a double, lone surrogates
    /// and nesting deeper than 512 are refused.
    [[nodiscard]] virtual std::optional<SettingValue> JSONObjectWithData(std::string_view data) const = 0;
    /// The value in words, for the console; also for values that cannot be written.
    [[nodiscard]] virtual std::string description(const SettingValue& value) const = 0;
};

}  // namespace nearcast
