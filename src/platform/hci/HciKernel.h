// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/hci/HciPort.h"

#include <sys/ioctl.h>

#include <cstddef>
#include <cstdint>

/// Numbers and structures of the kernel's Bluetooth sockets (include/net/bluetooth/{bluetooth,hci,hci_sock}.h of
/// Linux). Those headers are not installed with the kernel's others, and a page of numbers is not worth a library.
namespace nearcast::hci::kernel {

inline constexpr int bluetoothFamily = 31;  // AF_BLUETOOTH
inline constexpr int hciProtocol = 1;       // BTPROTO_HCI

inline constexpr std::uint16_t rawChannel = 0;   // HCI_CHANNEL_RAW
inline constexpr std::uint16_t userChannel = 1;  // HCI_CHANNEL_USER

/// `struct sockaddr_hci`.
struct Address {
    std::uint16_t family = bluetoothFamily;
    std::uint16_t device = 0;
    std::uint16_t channel = rawChannel;
};
static_assert(sizeof(Address) == 6);

inline constexpr int hciLevel = 0;      // SOL_HCI
inline constexpr int filterOption = 2;  // HCI_FILTER

/// `struct hci_ufilter`: which packets a raw socket is given.
struct Filter {
    std::uint32_t types = 0;           ///< by packet indicator
    std::uint32_t events[2] = {0, 0};  ///< by event code
    std::uint16_t opcode = 0;          ///< 0: of any command
    std::uint16_t padding = 0;
};
static_assert(sizeof(Filter) == 16);

inline constexpr std::size_t mostDevices = 64;
/// `struct hci_dev_list_req`.
struct DeviceList {
    std::uint16_t count = mostDevices;
    struct Device {
        std::uint16_t index = 0;
        std::uint32_t flags = 0;
    } devices[mostDevices];
};
static_assert(offsetof(DeviceList, devices) == 4 && sizeof(DeviceList::Device) == 8);

inline constexpr std::size_t mostLinks = 16;
/// `struct hci_conn_list_req`.
struct LinkList {
    std::uint16_t device = 0;
    std::uint16_t count = mostLinks;
    struct Link {
        std::uint8_t octets[12] = {};  // its handle, the address, the kind, the state
        std::uint32_t mode = 0;
    } links[mostLinks];
};
static_assert(offsetof(LinkList, links) == 4 && sizeof(LinkList::Link) == 16);

inline constexpr unsigned long getDeviceList = _IOR('H', 210, int);  // HCIGETDEVLIST
inline constexpr unsigned long getDeviceInfo = _IOR('H', 211, int);  // HCIGETDEVINFO
inline constexpr unsigned long getLinkList = _IOR('H', 212, int);    // HCIGETCONNLIST

}  // namespace nearcast::hci::kernel

namespace nearcast::hci {

/// The kernel of this machine.
class KernelHciPort : public HciPort {
public:
    Opened open(int index, HciAccess access) override;
    Asked adapter(int index) override;
    HciAdapterList adapters() override { return hciAdapters(); }
    bool hasLinks(int index) override { return hciHasLinks(index); }
    [[nodiscard]] Capabilities capabilities() const override { return ownCapabilities(); }
};

}  // namespace nearcast::hci
