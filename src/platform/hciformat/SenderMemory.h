// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "platform/radio/AdvertisingReport.h"
#include "support/SecretHash.h"

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace nearcast {

/// Remembers the names and services that senders give in their scan responses, and adds them to what they say later.
/// Of too many senders the one that was silent for longest is forgotten. Not for several threads at once.
class SenderMemory {
public:
    static constexpr std::size_t defaultSenders = 100'000;
    static constexpr std::size_t defaultOctets = std::size_t{64} << 20;

    /// @param mostSenders how many are remembered
    /// @param mostOctets  how much memory they take together, about
    explicit SenderMemory(std::size_t mostSenders = defaultSenders, std::size_t mostOctets = defaultOctets)
        : mostSenders_(mostSenders), mostOctets_(mostOctets) {}

    /// Learns from a scan response, and gives any report without a name, or without services, those that are
    /// remembered of its sender. Anonymous senders are left alone.
    void complete(AdvertisingReport& report);

private:
    struct Sender {
        std::uint64_t key = 0;
        std::optional<std::string> name;
        std::vector<CBUUID> services;
        std::size_t counted = 0;  ///< its part of `octets_`
        [[nodiscard]] std::size_t octets() const;
    };
    using Senders = std::list<Sender>;  // the one heard last is the last

    Senders::iterator find(std::uint64_t key);
    void learn(std::uint64_t key, const AdvertisingReport& report);
    void forget();

    std::size_t mostSenders_;
    std::size_t mostOctets_;
    std::size_t octets_ = 0;
    Senders senders_;
    std::unordered_map<std::uint64_t, Senders::iterator, SecretHash> places_;
};

}  // namespace nearcast
