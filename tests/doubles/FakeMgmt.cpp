// SPDX-License-Identifier: Apache-2.0
#include "doubles/FakeMgmt.h"

#include "platform/hciformat/ByteReader.h"

#include <cerrno>
#include <string>
#include <utility>

namespace nearcast::bluez {

namespace {

// BlueZ, doc/mgmt-api.txt.
constexpr std::uint16_t getConnections = 0x0015;
constexpr std::uint16_t startDiscovery = 0x0023;
constexpr std::uint16_t stopDiscovery = 0x0024;
constexpr std::uint8_t unknownCommand = 0x01;
constexpr std::uint8_t invalidParameters = 0x0D;
constexpr std::uint8_t permissionDenied = 0x14;

std::uint8_t low(std::uint16_t number) { return static_cast<std::uint8_t>(number & 0xFF); }
std::uint8_t high(std::uint16_t number) { return static_cast<std::uint8_t>(number >> 8); }

}  // namespace

FakeMgmt::FakeMgmt(FakeBluez& bluez) : bluez_(bluez) {
    bluez_.kernelDiscovers = [this](const std::string& name, bool on) {
        if (!privileged) return;
        const auto index = static_cast<std::uint16_t>(std::stoi(name.substr(3)));
        tell({0x13, 0, low(index), high(index), 2, 0, 6, static_cast<std::uint8_t>(on)});
    };
}

void FakeMgmt::tell(std::vector<std::uint8_t> message) {
    if (open_) messages_.push_back(std::move(message));
}

int FakeMgmt::open() {
    ++opened;
    if (openError != 0) return openError;
    open_ = true;
    return 0;
}

void FakeMgmt::close() {
    open_ = false;
    messages_.clear();
}

int FakeMgmt::send(std::span<const std::uint8_t> command) {
    if (!open_) return EBADF;
    ByteReader reader(command);
    const std::uint16_t code = reader.u16();
    const std::uint16_t index = reader.u16();
    reader.skip(2);
    const std::uint8_t type = code == getConnections ? std::uint8_t{0} : reader.u8();
    if (reader.failed() || reader.left() != 0) return EINVAL;
    if (code != getConnections) commands.push_back(code);
    if (mute) return 0;
    bluez_.at(bluez_.now() + FakeBluez::latency, [this, code, index, type] {
        const std::size_t before = messages_.size();
        const std::uint8_t status = carryOut(code, "hci" + std::to_string(index), type);
        if (!open_) return;
        answer(code, index, status);
        if (eventFirst || messages_.size() < before + 2) return;
        std::swap(messages_[before], messages_.back());
    });
    return 0;
}

std::uint8_t FakeMgmt::carryOut(std::uint16_t command, const std::string& adapter, std::uint8_t type) {
    if (!privileged) return permissionDenied;
    if (command == getConnections) return 0;
    if (command == startDiscovery) return bluez_.startInKernel(adapter);
    if (command != stopDiscovery) return unknownCommand;
    if (otherType != 0 && type != otherType) return invalidParameters;
    return bluez_.stopInKernel(adapter);
}

/// A command that succeeds is complete, one that fails has only a status.
void FakeMgmt::answer(std::uint16_t command, std::uint16_t index, std::uint8_t status) {
    const std::uint8_t code = status == 0 ? 1 : 2;
    tell({code, 0, low(index), high(index), 3, 0, low(command), high(command), status});
}

MgmtPort::Received FakeMgmt::receive() {
    if (const int error = std::exchange(receiveError, 0)) return {{}, error};
    if (messages_.empty()) return {};
    current_ = std::move(messages_.front());
    messages_.pop_front();
    return {current_, 0};
}

}  // namespace nearcast::bluez
