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
    /// @param length of what is added; two that differ in it are hashed by two keys
    SipHash(std::uint64_t key, std::uint64_t length) noexcept {
        constexpr std::uint64_t golden = 0x9E3779B97F4A7C15;
        const std::uint64_t second = std::rotl(key, 32) * golden;
        v0_ ^= key;
        v1_ ^= second ^ length;
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
    constexpr std::size_t wordSize = sizeof(std::uint64_t);
    SipHash hash(hashFactor(), text.size());
    std::uint64_t word = 0;
    std::size_t place = 0;
    for (; place + wordSize < text.size(); place += wordSize) {
        std::memcpy(&word, text.data() + place, wordSize);
        hash.add(word);
    }
    if (text.size() >= wordSize) {
        std::memcpy(&word, text.data() + text.size() - wordSize, wordSize);  // a part of it again: the length is known
    } else {
        for (const char octet : text) word = word << 8 | static_cast<unsigned char>(octet);
    }
    hash.add(word);
    return hash.end();
}

std::size_t SecretHash::operator()(std::uint64_t number) const {
    SipHash hash(hashFactor(), sizeof number);
    hash.add(number);
    return hash.end();
}

}  // namespace nearcast
