// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/NSJSONSerialization.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace nearcast {

/// Why a text is not JSON, and where.
struct JSONProblem {
    std::size_t offset = 0;  ///< octets before the place where it was noticed
    std::string text;
};

/// A place in a text as an editor shows it. A column is a character; what is not UTF-8 counts each octet as one, and a
/// byte order mark in front counts nothing.
struct JSONPlace {
    std::uint64_t line = 1;    ///< from 1
    std::uint64_t column = 1;  ///< from 1
};

/// The place of an octet of `data`.
JSONPlace placeOf(std::string_view data, std::size_t offset);
/// "not JSON at line 3, column 7: ...": how every reader of files says it.
std::string notJSON(const JSONPlace& place, std::string_view why);

/// The one place that knows the JSON library. It has no state and may be used from any thread.
class JSONSerialization : public NSJSONSerialization {
public:
    /// Objects and arrays in one another, the outermost included.
    static constexpr int maximumDepth = 512;

    [[nodiscard]] bool isValidJSONObject(const SettingValue& value) const override;
    [[nodiscard]] std::string dataWithJSONObject(const SettingValue& value) const override;
    [[nodiscard]] std::optional<SettingValue> JSONObjectWithData(std::string_view data) const override;
    [[nodiscard]] std::string description(const SettingValue& value) const override;

    /// As `JSONObjectWithData`, and says what is wrong.
    static std::variant<SettingValue, JSONProblem> parse(std::string_view data);
    /// The value on one line. Text that is not UTF-8 is written with the replacement character.
    static std::string compact(const SettingValue& value);
};

/// Appends `text` as a JSON string with its quotation marks, invalid UTF-8 replaced by U+FFFD, as `printableJSON`.
void appendQuoted(std::string& out, std::string_view text);

}  // namespace nearcast
