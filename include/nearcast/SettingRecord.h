// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/Export.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace nearcast {

/// One value of a setting record.
///
/// It keeps apart what JSON keeps apart (null, booleans, integers, floating-point numbers, texts,
/// arrays, dictionaries), so that a save and a load give back what was there, and it can also hold what
/// JSON cannot express (bytes, a number that is not finite, text that is not UTF-8); a registry that
/// holds such a value cannot be saved.
///
/// A plain value: copying copies everything below it, and it is as safe to share between threads as a
/// `std::string` is.
class NEARCAST_EXPORT SettingValue {
public:
    /// A list.
    using Array = std::vector<SettingValue>;
    /// Values by their keys.
    using Dictionary = std::map<std::string, SettingValue, std::less<>>;
    /// What JSON cannot express.
    using Bytes = std::vector<std::byte>;
    /// Integers up to 2^63 - 1 are held signed, larger ones unsigned, so that equal numbers are equal values.
    using Storage =
        std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double, std::string, Array, Dictionary, Bytes>;

    /// Null.
    SettingValue() : storage_(nullptr) {}
    /// @name From a plain value
    /// @{
    // NOLINTBEGIN(google-explicit-constructor): a record is written as a list of keys and plain values
    /// Holds the value; of a `const char*` a copy.
    SettingValue(std::nullptr_t) : storage_(nullptr) {}
    SettingValue(bool value) : storage_(value) {}
    SettingValue(int value) : storage_(std::int64_t{value}) {}
    SettingValue(long value) : storage_(std::int64_t{value}) {}
    SettingValue(long long value) : storage_(std::int64_t{value}) {}
    SettingValue(unsigned value) : storage_(std::int64_t{value}) {}
    SettingValue(unsigned long value) : storage_(integer(value)) {}
    SettingValue(unsigned long long value) : storage_(integer(value)) {}
    SettingValue(double value) : storage_(value) {}
    SettingValue(const char* value) : storage_(std::string(value)) {}
    SettingValue(std::string_view value) : storage_(std::string(value)) {}
    SettingValue(std::string value) : storage_(std::move(value)) {}
    SettingValue(Array value) : storage_(std::move(value)) {}
    SettingValue(Dictionary value) : storage_(std::move(value)) {}
    SettingValue(Bytes value) : storage_(std::move(value)) {}
    /// @}
    // NOLINTEND(google-explicit-constructor)

    /// What is held.
    [[nodiscard]] const Storage& storage() const noexcept { return storage_; }

    /// The value when it is of type `T`, one of the alternatives of `Storage`; otherwise null.
    template <class T>
    [[nodiscard]] const T* as() const noexcept {
        return std::get_if<T>(&storage_);
    }
    /// The same, to change it or to move it out. A `std::uint64_t` stays above the signed range.
    template <class T>
    [[nodiscard]] T* as() noexcept {
        return std::get_if<T>(&storage_);
    }

    /// The value read as a 32-bit integer, as the manager reads "Device Type": a boolean counts 0 or 1, a
    /// floating-point number is cut toward zero and clamped, text is read as far as it is a number, and
    /// anything else is 0.
    [[nodiscard]] std::int32_t intValue() const noexcept;

    /// By kind and value.
    friend bool operator==(const SettingValue& left, const SettingValue& right) {
        return left.storage_ == right.storage_;
    }

private:
    static Storage integer(std::uint64_t value) {
        if (value <= static_cast<std::uint64_t>(INT64_MAX)) return static_cast<std::int64_t>(value);
        return value;
    }

    Storage storage_;
};

/// What is known of one registered device: key text to value. The keys that the manager writes are the
/// constants below; others are kept, saved and loaded unchanged.
using SettingRecord = SettingValue::Dictionary;

/// Records are shared between the registry and its snapshots and are never edited in place.
using SettingRecordPointer = std::shared_ptr<const SettingRecord>;

/// A registry or a snapshot of it: port name to record.
using Settings = std::map<std::string, SettingRecordPointer, std::less<>>;

/// Text, present only when the caller gave port settings: what the printing layer passes when it opens the port.
inline constexpr std::string_view kQXPortSettings = "Port Settings";
/// Integer, a `QXDeviceType`.
inline constexpr std::string_view kQXDeviceType = "Device Type";
/// Boolean: a cash drawer is attached to, or is, this device.
inline constexpr std::string_view kQXWithDrawer = "With Drawer";
/// Text: the address of the dongle beside the device, exactly as registered.
inline constexpr std::string_view kQXDongleMACAddr = "MAC Address";
/// Integer in dBm, present only when the caller gave a threshold. The application's to use: the manager
/// compares no signal with it.
inline constexpr std::string_view kQXThreshouldRSSI = "Threshold RSSI";
/// Text: a display name; "(null)" when none was given.
inline constexpr std::string_view kQXNickName = "Nick Name";

}  // namespace nearcast
