// SPDX-License-Identifier: Apache-2.0
#include "platform/hci/HciAdapters.h"

#include "platform/hci/HciKernel.h"
#include "platform/hciformat/ByteReader.h"
#include "platform/hciformat/HciEvents.h"

#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace nearcast::hci {

namespace {

constexpr std::uint32_t upFlag = 1U << 0;         // HCI_UP
constexpr std::size_t lowEnergyFeatureOctet = 4;  // Core Specification, Volume 2, Part C, 3.3: bit 38
constexpr std::uint8_t lowEnergyFeature = 0x40;
// capabilities(7): bit numbers.
constexpr unsigned netAdminBit = 12;
constexpr unsigned netRawBit = 13;

std::string_view busName(unsigned bus) {
    constexpr std::array<std::string_view, 12> names = {"virtual", "USB", "PC Card", "UART", "RS-232", "PCI",
                                                        "SDIO",    "SPI", "I2C",     "SMD",  "VIRTIO", "IPC"};
    return bus < names.size() ? names[bus] : "unknown";
}

/// An unbound socket for questions to the kernel.
class AskingSocket {
public:
    AskingSocket() : socket_(socket(kernel::bluetoothFamily, SOCK_RAW | SOCK_CLOEXEC, kernel::hciProtocol)) {
        if (socket_ < 0) error_ = errno;
    }
    ~AskingSocket() {
        if (socket_ >= 0) close(socket_);
    }
    AskingSocket(const AskingSocket&) = delete;
    AskingSocket& operator=(const AskingSocket&) = delete;

    bool ask(unsigned long question, void* answer) {
        if (socket_ < 0) return false;
        error_ = ioctl(socket_, question, answer) < 0 ? errno : 0;
        return error_ == 0;
    }
    [[nodiscard]] int error() const noexcept { return error_; }

private:
    int socket_;
    int error_ = 0;
};

std::optional<HciAdapter> askFor(AskingSocket& kernelSocket, std::uint16_t index) {
    alignas(4) std::uint8_t info[hciDeviceInfoOctets] = {};
    std::memcpy(info, &index, sizeof index);
    if (!kernelSocket.ask(kernel::getDeviceInfo, info)) return std::nullopt;
    HciAdapter adapter = readHciDeviceInfo(info);
    adapter.blocked = hciBlock(adapter.name);
    return adapter;
}

bool readsOne(const std::filesystem::path& file) {
    int value = 0;
    return std::ifstream(file) >> value && value != 0;
}

}  // namespace

HciAdapter readHciDeviceInfo(const std::uint8_t (&info)[hciDeviceInfoOctets]) {
    ByteReader reader(info);
    HciAdapter adapter;
    adapter.index = reader.u16();
    const auto name = reader.take(8);
    adapter.name.assign(name.begin(), std::find(name.begin(), name.end(), 0));
    adapter.address = addressFromAir(reader.take(6));
    adapter.up = (reader.u32() & upFlag) != 0;
    adapter.bus = busName(reader.u8() & 0x0FU);
    const auto features = reader.take(8);
    const bool asked = std::any_of(features.begin(), features.end(), [](std::uint8_t octet) { return octet != 0; });
    if (asked) adapter.lowEnergy = (features[lowEnergyFeatureOctet] & lowEnergyFeature) != 0;
    return adapter;
}

HciBlock hciBlock(std::string_view name, const std::string& controllers) {
    HciBlock block;
    std::error_code none;
    const std::filesystem::path folder = std::filesystem::path(controllers) / name;
    // A controller that is unplugged meanwhile ends this with an error.
    std::filesystem::directory_iterator entry(folder, none);
    for (; !none && entry != std::filesystem::directory_iterator(); entry.increment(none)) {
        if (!entry->path().filename().string().starts_with("rfkill")) continue;
        block.soft = block.soft || readsOne(entry->path() / "soft");
        block.hard = block.hard || readsOne(entry->path() / "hard");
    }
    return block;
}

HciAdapterList hciAdapters() {
    AskingSocket kernelSocket;
    kernel::DeviceList list;
    HciAdapterList result;
    if (!kernelSocket.ask(kernel::getDeviceList, &list)) {
        result.error = kernelSocket.error();
        return result;
    }
    for (std::size_t i = 0; i < std::min<std::size_t>(list.count, kernel::mostDevices); ++i) {
        if (auto adapter = askFor(kernelSocket, list.devices[i].index)) result.adapters.push_back(std::move(*adapter));
    }
    std::sort(result.adapters.begin(), result.adapters.end(),
              [](const HciAdapter& left, const HciAdapter& right) { return left.index < right.index; });
    return result;
}

std::optional<HciAdapter> hciAdapter(int index, int& error) {
    AskingSocket kernelSocket;
    auto adapter = askFor(kernelSocket, static_cast<std::uint16_t>(index));
    error = kernelSocket.error();
    return adapter;
}

bool hciHasLinks(int index) {
    AskingSocket kernelSocket;
    kernel::LinkList list;
    list.device = static_cast<std::uint16_t>(index);
    return kernelSocket.ask(kernel::getLinkList, &list) && list.count > 0;
}

Capabilities ownCapabilities(const std::string& status) {
    std::ifstream file(status);
    std::string word;
    while (file >> word) {
        if (word != "CapEff:") continue;
        unsigned long long effective = 0;
        if (!(file >> std::hex >> effective)) break;
        return {(effective >> netAdminBit & 1) != 0, (effective >> netRawBit & 1) != 0};
    }
    return {};
}

std::string ownProgram() {
    std::error_code unknown;
    const auto path = std::filesystem::read_symlink("/proc/self/exe", unknown);
    return unknown ? "PROGRAM" : path.string();
}

}  // namespace nearcast::hci
