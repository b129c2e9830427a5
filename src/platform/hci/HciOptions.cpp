// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciOptions.h"

#include <charconv>
#include <stdexcept>

namespace nearcast {

namespace {

constexpr unsigned mostIndex = 0xFFFE;  // the kernel's 0xFFFF is no controller

[[noreturn]] void refuse(const RadioString& radio, const std::string& why) {
    throw std::invalid_argument("radio '" + radio.text + "': " + why);
}

int parseIndex(const RadioString& radio) {
    std::string_view text = radio.argument;
    if (text.empty()) return 0;
    if (text.starts_with("hci")) text.remove_prefix(3);
    unsigned index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    if (error != std::errc() || end != text.data() + text.size() || index > mostIndex) {
        refuse(radio, "'" + radio.argument + "' is no controller's number, as in hci:0");
    }
    return static_cast<int>(index);
}

}  // namespace

HciTarget parseHciTarget(const RadioString& radio) {
    HciTarget target;
    target.index = parseIndex(radio);
    if (const auto beside = radio.options.find("beside"); beside != radio.options.end()) {
        if (!beside->second.empty()) refuse(radio, "'beside' takes no value");
        target.access = HciAccess::beside;
    }
    return target;
}

}  // namespace nearcast
