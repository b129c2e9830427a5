// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/QXBluetoothManager.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nearcast::cli {

/// What a line of the table tells of a dongle. The texts hold during the call.
struct TableRow {
    std::string_view portName;  ///< empty: it is not registered
    QXDeviceType deviceType = QXDeviceTypeUnknown;
    std::string_view MACAddr;
    std::optional<std::int32_t> RSSI;  ///< dBm; nothing: it has fallen silent
    double age = 0;                    ///< seconds since its last report
};

/// Which columns the table has in a terminal of some width, and how wide they are. Where there is not room for all,
/// they give way in this order: the bar, the type, the address, the age. Port and signal stay, and at last the port is
/// cut short. Without its column an address stands in that of the port, for a dongle that has none.
class TableLayout {
public:
    /// @param width columns of the terminal that a line may take
    explicit TableLayout(std::size_t width);

    [[nodiscard]] std::string heading() const;
    [[nodiscard]] std::string row(const TableRow& row) const;

private:
    [[nodiscard]] std::string joined(std::string_view port, std::string_view type, std::string_view address,
                                     std::string_view signal, std::string_view bar, std::string_view age) const;

    std::size_t width_;
    // Columns; 0 for one that there is no room for.
    std::size_t port_;
    std::size_t type_ = 0;
    std::size_t address_ = 0;
    std::size_t bar_ = 0;
    std::size_t age_ = 0;
};

}  // namespace nearcast::cli
