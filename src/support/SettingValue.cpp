// SPDX-License-Identifier: Apache-2.0
#include <nearcast/SettingRecord.h>

#include "support/Number.h"

namespace nearcast {

namespace {

struct IntValue {
    std::int32_t operator()(bool value) const { return value ? 1 : 0; }
    std::int32_t operator()(std::int64_t value) const { return clampedToInt32(value); }
    std::int32_t operator()(std::uint64_t /*above the signed range*/) const { return INT32_MAX; }
    std::int32_t operator()(double value) const { return int32FromNumber(value); }
    std::int32_t operator()(const std::string& value) const { return int32FromText(value); }
    template <class Other>
    std::int32_t operator()(const Other& /*not a number*/) const {
        return 0;
    }
};

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): a visit throws only for a value that a failed assignment has broken
std::int32_t SettingValue::intValue() const noexcept { return std::visit(IntValue{}, storage_); }

}  // namespace nearcast
