// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::lines {

/// The fields of one line, taken out one by one with their types checked. A field that is null counts as absent.
/// Every operation throws `LineError`, which names the field.
class Fields {
public:
    explicit Fields(SettingValue::Dictionary fields) : fields_(std::move(fields)) {}
    /// @param text a JSON object
    static Fields parse(std::string_view text);

    /// Whether there is such a field, null or not, that has not been taken yet.
    [[nodiscard]] bool has(std::string_view name) const { return fields_.find(name) != fields_.end(); }
    std::optional<std::string> text(std::string_view name);
    std::optional<double> number(std::string_view name);
    /// A number that is a time in seconds, at most 9e9 on either side of 0: beyond that a double cannot name each
    /// microsecond any more.
    std::optional<double> seconds(std::string_view name);
    std::optional<bool> boolean(std::string_view name);
    std::optional<std::int64_t> integer(std::string_view name);
    std::optional<std::uint64_t> unsignedInteger(std::string_view name);
    std::optional<std::vector<std::string>> texts(std::string_view name);
    /// Hexadecimal text.
    std::optional<std::vector<std::uint8_t>> octets(std::string_view name);
    std::optional<SettingValue::Dictionary> object(std::string_view name);

    /// To be called last.
    /// @throws LineError when a field is left that was not taken
    void requireNoMore() const;

private:
    std::optional<SettingValue> take(std::string_view name);

    SettingValue::Dictionary fields_;
};

}  // namespace nearcast::lines
