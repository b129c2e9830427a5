// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/SystemBus.h"

#include <utility>

namespace nearcast::bluez {

void DeviceNews::clear() {
    std::vector<std::string_view> room = std::move(services);
    room.clear();
    *this = DeviceNews();
    services = std::move(room);
}

}  // namespace nearcast::bluez
