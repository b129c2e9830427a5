// SPDX-License-Identifier: Apache-2.0
#include "support/Trace.h"

namespace nearcast {

void trace::append(std::string& text, Pointer pointer) {
    char digits[16];
    const auto value = reinterpret_cast<std::uintptr_t>(pointer.address);
    text += "0x";
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), value, 16).ptr);
}

void Trace::write(QXLogType type, std::string_view fileName, std::uint32_t lineNumber, std::string_view text) const {
    LogWriter::sharedInstance().outputLogAsyncWithLogType(type, level, object_, fileName, lineNumber, method_, text);
}

void Trace::lose() noexcept { LogWriter::sharedInstance().lose(); }

}  // namespace nearcast
