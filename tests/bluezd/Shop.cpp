// SPDX-License-Identifier: Apache-2.0
#include "Shop.h"

#include <algorithm>
#include <cmath>

namespace nearcast::bluezd {

namespace {

constexpr std::int16_t strongest = -50;
constexpr std::int16_t weakest = -80;

/// 02:00:00:00:HH:LL: locally administered, nobody's own.
std::array<std::uint8_t, 6> numbered(std::size_t number) {
    return {2, 0, 0, 0, static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number)};
}

}  // namespace

Shop::Shop(std::size_t devices, double rate) : interval_(rate > 0 ? Time(std::llround(1e9 / rate)) : Time::max()) {
    devices_.resize(devices);
    for (std::size_t index = 0; index < devices; ++index) {
        Device& device = devices_[index];
        device.address = numbered(index + 1);
        device.path = "/org/bluez/hci0/dev_" + text(device.address, '_');
        device.RSSI = static_cast<std::int16_t>(weakest + static_cast<int>(index % (strongest - weakest)));
    }
}

Device* Shop::find(const std::string& address) {
    const auto found = std::find_if(devices_.begin(), devices_.end(),
                                    [&](const Device& device) { return text(device.address, ':') == address; });
    return found == devices_.end() ? nullptr : &*found;
}

void Shop::start(Time now) {
    running_ = !devices_.empty() && interval_ != Time::max();
    due_ = running_ ? now + interval_ : Time::max();
}

Device* Shop::next() {
    Device& device = devices_[turn_];
    turn_ = (turn_ + 1) % devices_.size();
    due_ += interval_;
    if (device.silent) return nullptr;
    device.RSSI = device.RSSI >= strongest ? weakest : static_cast<std::int16_t>(device.RSSI + 1);
    return &device;
}

std::string Shop::text(const std::array<std::uint8_t, 6>& address, char separator) {
    constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    for (const std::uint8_t octet : address) {
        if (!result.empty()) result += separator;
        result += digits[octet >> 4];
        result += digits[octet & 15];
    }
    return result;
}

}  // namespace nearcast::bluezd
