// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "contract/ReportTable.h"
#include "platform/CBCentralManager.h"
#include "platform/radio/RadioMonitor.h"
#include "unit/platform/hciformat/HciBytes.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace nearcast::contract {

using Reports = std::vector<AdvertisingReport>;

/// Keeps every report that a tap is told, and sees to it that the delegate is told the same right behind it.
class Ears : public CBCentralManagerDelegate {
public:
    /// @param monitor of the radio that has this as its delegate; until `stop`
    void listen(RadioMonitor& monitor);
    void stop(RadioMonitor& monitor) { monitor.setTap({}); }

    void centralManagerDidUpdateState(CBCentralManager& /*central*/) override {}
    void centralManagerDidDiscoverPeripheral(CBCentralManager& central, const CBPeripheral& peripheral,
                                             const AdvertisementData& data, std::int32_t RSSI) override;

    Reports reports;

private:
    std::size_t told_ = 0;
};

/// One way in which an advertisement may come to the manager.
struct ReportBench {
    const char* name;
    const char* radio;  ///< as the table's exceptions name it
    bool addresses;     ///< it says who sent what
    std::function<Reports(const std::vector<AirRow>& rows)> hear;

    friend std::ostream& operator<<(std::ostream& out, const ReportBench& bench) { return out << bench.name; }
};

/// All of them.
std::vector<ReportBench> reportBenches();

/// Has the rows advertised twice, in their order. With `answers` scan responses follow where there are any, the first
/// time.
/// @param sink takes HCI events
void advertise(const std::vector<AirRow>& rows, bool answers, const std::function<void(const Octets& event)>& sink);

Reports hearBluez(const std::vector<AirRow>& rows);
Reports hearHci(const std::vector<AirRow>& rows);
Reports hearBesideOthers(const std::vector<AirRow>& rows);
Reports hearBtsnoop(const std::vector<AirRow>& rows);
/// Plays a recording of any kind.
Reports hearRecording(const std::string& bytes);

}  // namespace nearcast::contract
