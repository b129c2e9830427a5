// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <compare>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>

namespace nearcast {

/// The address of a dongle.
///
/// The manager compares addresses letter by letter, and dongles are heard under six upper-case hexadecimal octets
/// joined by colons. `parse` gives an address that a person typed this spelling; `asHeard` keeps one that came from the
/// air, for a dongle may also be heard under another: one that says its address in its name alone keeps the name's
/// letters.
///
/// A plain value.
class NEARCAST_EXPORT Address {
public:
    /// Reads an address as people write it: twelve hexadecimal digits, of any case, in pairs joined by colons, hyphens,
    /// dots, underscores or blanks, in fours joined by any of these, or all together; "QX" may stand in front, as in a
    /// dongle's name; blanks around count nothing.
    /// @return nothing where the text is none of these
    static std::optional<Address> parse(std::string_view text);
    /// An address letter by letter as it is, as from a delegate or a file.
    static Address asHeard(std::string text);

    /// As `parse`.
    /// @throws std::invalid_argument naming the text where it is none of these
    explicit Address(std::string_view text);

    /// Its letters.
    [[nodiscard]] const std::string& text() const noexcept { return text_; }
    /// Whether it is spelt as dongles are heard: "00:11:22:AA:BB:CC".
    [[nodiscard]] bool isUsual() const noexcept;

    /// By the letters: of two spellings of one address each is its own.
    friend bool operator==(const Address&, const Address&) = default;
    /// By the letters.
    friend std::strong_ordering operator<=>(const Address&, const Address&) = default;
    /// Writes the letters.
    friend std::ostream& operator<<(std::ostream& out, const Address& address) { return out << address.text_; }

private:
    struct AsItIs {};
    Address(AsItIs /*unused*/, std::string text) : text_(std::move(text)) {}

    std::string text_;
};

}  // namespace nearcast
