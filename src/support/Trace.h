// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/LogWriter.h>

#include <charconv>
#include <concepts>
#include <cstdint>
#include <iterator>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace nearcast {

/// A part of a record's text: an address as "0x" and lower-case hexadecimal digits, null as "0x0".
struct Pointer {
    const void* address = nullptr;
};

/// The text that a record begins with and the source line that writes it. It is made from a literal, in the call
/// itself: `trace.process("rssi != nil, ", Pointer{rssi})`.
struct Lead {
    // NOLINTNEXTLINE(google-explicit-constructor): the conversion is what captures the caller's line
    Lead(const char* leadText, const char* file = __builtin_FILE(), int line = __builtin_LINE())
        : text(leadText), fileName(file), lineNumber(static_cast<std::uint32_t>(line)) {}

    const char* text;
    const char* fileName;  ///< relative to the source tree, by the build's -ffile-prefix-map
    std::uint32_t lineNumber;
};

namespace trace {

void append(std::string& text, Pointer pointer);
inline void append(std::string& text, std::string_view part) { text += part; }
inline void append(std::string& text, const std::string& part) { text += part; }
inline void append(std::string& text, const char* part) { text += part == nullptr ? "(null)" : part; }

template <class Part>
concept Character = std::same_as<Part, char> || std::same_as<Part, wchar_t> || std::same_as<Part, char8_t> ||
    std::same_as<Part, char16_t> || std::same_as<Part, char32_t>;
template <class Part>
concept Number = std::integral<Part> && !std::same_as<Part, bool> && !Character<Part>;
template <class Part>
concept Enumeration = std::is_enum_v<Part>;

template <std::same_as<bool> Part>
void append(std::string& text, Part part) {
    text += part ? '1' : '0';
}

template <Number Part>
void append(std::string& text, Part part) {
    char digits[24];  // a sign and the 20 digits of the largest 64-bit number
    text.append(digits, std::to_chars(std::begin(digits), std::end(digits), part).ptr);
}

template <Enumeration Part>
void append(std::string& text, Part part) {
    append(text, static_cast<std::underlying_type_t<Part>>(part));
}

template <class Part>
void append(std::string& text, const std::optional<Part>& part) {
    if (part) {
        append(text, *part);
    } else {
        text += "(null)";
    }
}

template <std::invocable Part>
void append(std::string& text, const Part& part) {
    append(text, part());
}

/// How a part is passed on: values of two registers at most as they are, the others by their address.
template <class Part>
using Passed = std::conditional_t<std::is_trivially_copyable_v<Part> && !std::is_array_v<Part> &&
                                      sizeof(Part) <= 2 * sizeof(void*),
                                  Part, const Part&>;

}  // namespace trace

/// Writes the trace records of one operation.
///
/// @code
/// const Trace trace(this, "-[QXNearcastManager getRSSI:]", Trace::Audience::publicAPI);
/// trace.start("", MACAddr);
/// ...
/// trace.end("", MACAddr, ", -> ", rssi);
/// @endcode
///
/// The text of a record is the lead and then each part in order: texts as they are, an absent optional as "(null)",
/// booleans as 0 and 1, integers and enumerations in decimal, addresses as `Pointer`. A part that is costly to make is
/// given as a callable without arguments, which is asked for it only when the record is wanted; what it throws passes
/// to the caller. While nobody listens, nothing is built and a call costs one relaxed load.
///
/// A record for which there is no memory is dropped, and counted with those that the writer drops: an operation does
/// the same, and ends the same, whether it is traced or not.
///
/// An object of this type lives on the stack of its operation and is used by that thread; the views it was made
/// with live as long.
class Trace {
public:
    enum class Audience {
        publicAPI,  ///< entry and exit are records of type 0 and 1
        internal,   ///< entry and exit are records of type 2 and 3: internal operations, callbacks, timer handlers
    };

    /// @param object the object that speaks; for a class operation what stands for the class
    /// @param method the operation's full name, for example "-[QXNearcastManager setSettings:]"
    Trace(const void* object, std::string_view method, Audience audience)
        : object_(object), method_(method), audience_(audience) {}

    /// The operation is entered.
    template <class... Parts>
    void start(Lead lead, const Parts&... parts) const {
        record(audience_ == Audience::publicAPI ? QXLogTypePavixAPIStart : QXLogTypeInternalMethodStart, lead,
               parts...);
    }
    /// The operation is left.
    template <class... Parts>
    void end(Lead lead, const Parts&... parts) const {
        record(audience_ == Audience::publicAPI ? QXLogTypePavixAPIEnd : QXLogTypeInternalMethodEnd, lead, parts...);
    }
    /// A branch is taken in the normal course.
    template <class... Parts>
    void process(Lead lead, const Parts&... parts) const {
        record(QXLogTypeProcess, lead, parts...);
    }
    /// Something is refused.
    template <class... Parts>
    void error(Lead lead, const Parts&... parts) const {
        record(QXLogTypeError, lead, parts...);
    }

private:
    static constexpr std::int32_t level = 0;

    template <class... Parts>
    void record(QXLogType type, const Lead& lead, const Parts&... parts) const {
        if (LogWriter::isLogging()) [[unlikely]]
            recordWanted<Parts...>(type, lead.text, lead.fileName, lead.lineNumber, parts...);
    }

    // Apart, and with all that is small by value: so nothing is put on the stack where nobody listens.
    template <class... Parts>
    [[gnu::cold, gnu::noinline]] void recordWanted(QXLogType type, const char* leadText, const char* fileName,
                                                   std::uint32_t lineNumber, trace::Passed<Parts>... parts) const {
        if (!LogWriter::isTargetLogLevel(level)) return;
        try {
            std::string text(leadText);
            (trace::append(text, parts), ...);
            write(type, fileName, lineNumber, text);
        } catch (const std::bad_alloc&) {
            lose();
        }
    }

    void write(QXLogType type, std::string_view fileName, std::uint32_t lineNumber, std::string_view text) const;
    static void lose() noexcept;

    const void* object_;
    std::string_view method_;
    Audience audience_;
};

}  // namespace nearcast
