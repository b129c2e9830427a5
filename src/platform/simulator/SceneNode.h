// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nearcast::simulator {

/// What is wrong with a scene: the file, the member's path, and what was expected of it.
class SceneError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

/// The numbers that a member may have.
struct Range {
    double lowest;
    double highest;
    std::string_view unit;  ///< "" where it has none
};

/// One value of a scene's JSON with the path that leads to it, as in `$.dongles[2].txPower`. Every operation throws
/// `SceneError` with that path when the value is not what it is asked for. A member that is null counts as absent.
class SceneNode {
public:
    /// @param value outlives the node and all that are taken from it
    SceneNode(const SettingValue& value, std::string path) : value_(&value), path_(std::move(path)) {}

    [[nodiscard]] double number(const Range& range) const;
    /// A number without a fraction; the range's bounds have none either.
    [[nodiscard]] std::int64_t wholeNumber(const Range& range) const;
    /// A whole number of up to 64 bits, 0 or more.
    [[nodiscard]] std::uint64_t unsignedNumber() const;
    [[nodiscard]] bool boolean() const;
    /// Text of 1 to `longest` octets.
    [[nodiscard]] const std::string& text(std::size_t longest) const;
    /// The elements of a list of `fewest` to `most`.
    [[nodiscard]] std::vector<SceneNode> list(std::size_t fewest, std::size_t most) const;

    /// What one of the words stands for.
    template <class Meaning>
    [[nodiscard]] Meaning word(std::initializer_list<std::pair<std::string_view, Meaning>> words) const {
        const auto* const given = value_->as<std::string>();
        std::string known;
        for (const auto& [name, meaning] : words) {
            if (given != nullptr && *given == name) return meaning;
            known.append(known.empty() ? "\"" : ", \"").append(name).append("\"");
        }
        refuse("expected one of " + known);
    }

    /// Checks that this is an object whose members are all among these.
    void requireObject(std::initializer_list<std::string_view> known) const;
    /// A member of an object, where it has one of that name.
    [[nodiscard]] std::optional<SceneNode> member(std::string_view name) const;
    /// A member that has to be there.
    [[nodiscard]] SceneNode need(std::string_view name) const;

    [[noreturn]] void refuse(const std::string& why) const;
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

private:
    [[nodiscard]] std::optional<double> asNumber() const;
    [[nodiscard]] std::string pathOf(std::string_view member) const;

    const SettingValue* value_;
    std::string path_;
};

/// A number as a person would write it.
[[nodiscard]] std::string written(double number);

}  // namespace nearcast::simulator
