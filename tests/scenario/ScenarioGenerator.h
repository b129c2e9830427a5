// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "scenario/BlobGenerator.h"
#include "scenario/Random.h"

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::scenario {

/// Makes scenarios by chance, the same from the same seed. Each leans to one subject, so that the rare paths of all are
/// walked: scanning, calibrating, the registry, the radio's states, or everything.
class ScenarioGenerator {
public:
    explicit ScenarioGenerator(std::uint64_t seed) : ScenarioGenerator(Random(seed)) {}
    explicit ScenarioGenerator(Random random);

    /// The lines, without mistakes.
    std::vector<std::string> lines();

    struct Subject;

private:
    using Json = nlohmann::json;

    void add(Json line);
    void passTime();
    void oneLine();
    Json lineOf(std::size_t kind);

    Json setDelegate();
    Json addSetting();
    Json setSettings();
    Json deserializeSettings();
    Json startScan();
    Json radio();
    Json withAddress(std::string_view what);
    Json advertise();
    void burst();
    std::int64_t RSSI();

    Random random_;
    BlobGenerator blobs_;
    const Subject& subject_;
    std::int64_t at_ = 0;  ///< microseconds
    std::vector<std::string> lines_;
};

}  // namespace nearcast::scenario
