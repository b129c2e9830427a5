// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast {

/// A radio string taken apart: `KIND`, `KIND:ARGUMENT`, `KIND?NAME=VALUE`, `KIND:ARGUMENT?NAME=VALUE&NAME=VALUE`. The
/// options begin at the last "?" with no backslash before it; a name without "=" has the value "". In an argument "\?"
/// is a question mark that belongs to it, and "\\" a backslash; any other backslash is one.
struct RadioString {
    std::string text;  ///< as it was given, for messages
    std::string kind;
    std::string argument;
    std::map<std::string, std::string, std::less<>> options;

    /// @throws std::invalid_argument for an unknown kind, an unknown or repeated option, a missing or a needless
    /// argument
    static RadioString parse(std::string_view text);

    /// The kinds that there are.
    static std::vector<std::string> kinds();

    /// An option's value, or `otherwise` where it is absent.
    [[nodiscard]] std::string_view option(std::string_view name, std::string_view otherwise) const;
};

}  // namespace nearcast
