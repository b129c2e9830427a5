// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scenario/Random.h"

#include <nlohmann/json.hpp>
#include <string>

namespace nearcast::scenario {

/// Makes values, registries and JSON texts by chance: good ones in odd spellings, misshapen ones, and ones that are no
/// JSON at all.
class BlobGenerator {
public:
    explicit BlobGenerator(Random& random) : random_(random) {}

    /// A registry in the form that `setSettings` takes, or (`saved`) in that of a blob. No two records have one
    /// address: which of them answers for it is nobody's promise.
    nlohmann::json registry(bool saved);
    /// Octets for `deserializeSettings`.
    std::string blob();

    std::string portName();
    std::string address();

private:
    nlohmann::json record(bool saved, const std::string& address);
    nlohmann::json deviceType(bool saved);
    nlohmann::json value(int depth);
    nlohmann::json number();
    std::string text();
    std::string nested(int depth);
    void write(const nlohmann::json& value, std::string& out);
    void writeText(const std::string& text, std::string& out);
    void space(std::string& out);
    std::string damaged(std::string blob);

    Random& random_;
};

}  // namespace nearcast::scenario
