// SPDX-License-Identifier: Apache-2.0
#include "support/SecretHash.h"

#include "support/AddressText.h"

#include <bit>
#include <cstring>

namespace nearcast {

namespace {

/// SipHash-1-3 (Aumasson and Bernstein): without its key nobody finds texts that collide.
class SipHash {
public:
    explicit SipHash(std::uint64_t key) noexcept {
        constexpr std::uint64_t golden = 0x9E3779B97F4A7C15;
        const std::uint64_t second = std::rotl(key, 32) * golden;
        v0_ ^= key;
        v1_ ^= second;
        v2_ ^= key;
        v3_ ^= second;
    }

    void add(std::uint64_t word) noexcept {
        v3_ ^= word;
        round();
        v0_ ^= word;
    }

    std::size_t end() noexcept {
        v2_ ^= 0xFF;
        for (int time = 0; time < 3; ++time) round();
        return static_cast<std::size_t>(v0_ ^ v1_ ^ v2_ ^ v3_);
    }

private:
    void round() noexcept {
        v0_ += v1_;
        v2_ += v3_;
        v1_ = std::rotl(v1_, 13) ^ v0_;
        v3_ = std::rotl(v3_, 16) ^ v2_;
        v0_ = std::rotl(v0_, 32);
        v2_ += v1_;
        v0_ += v3_;
        v1_ = std::rotl(v1_, 17) ^ v2_;
        v3_ = std::rotl(v3_, 21) ^ v0_;
        v2_ = std::rotl(v2_, 32);
    }

    std::uint64_t v0_ = 0x736f6d6570736575;
    std::uint64_t v1_ = 0x646f72616e646f6d;
    std::uint64_t v2_ = 0x6c7967656e657261;
    std::uint64_t v3_ = 0x7465646279746573;
};

}  // namespace

std::size_t SecretHash::operator()(std::string_view text) const {
    SipHash hash(hashFactor());
    const char* place = text.data();
    std::size_t left = text.size();
    for (; left >= sizeof(std::uint64_t); left -= sizeof(std::uint64_t), place += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, place, sizeof word);
        hash.add(word);
    }
    std::uint64_t last = 0;
    if (left != 0) std::memcpy(&last, place, left);
    hash.add(last ^ std::uint64_t{text.size()} << 56);
    return hash.end();
}

std::size_t SecretHash::operator()(std::uint64_t number) const {
    SipHash hash(hashFactor());
    hash.add(number);
    return hash.end();
}

}  // namespace nearcast
