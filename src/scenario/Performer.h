// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/QXNearcastManager.h>

#include "platform/virtual/VirtualPlatform.h"
#include "scenario/EventWriter.h"
#include "scenario/Line.h"

namespace nearcast::scenario {

/// Makes the lines of a scenario happen: calls the manager or lets the virtual radio hear something, and writes down
/// what came back.
class Performer {
public:
    /// All three live longer.
    Performer(QXNearcastManager& manager, VirtualPlatform& platform, EventWriter& writer)
        : manager_(manager), platform_(platform), writer_(writer) {}

    /// What the call raises is written down, not thrown.
    void perform(const Action& action);

private:
    [[nodiscard]] Time now() { return platform_.timeline().now(); }

    void operator()(const SharedManager& action);
    void operator()(const SetDelegate& action);
    void operator()(const AddSetting& action);
    void operator()(const RemoveSetting& action);
    void operator()(const ReadSettings& action);
    void operator()(const SetSettings& action);
    void operator()(const SerializeSettings& action);
    void operator()(const DeserializeSettings& action);
    void operator()(const StartScan& action);
    void operator()(const StopScan& action);
    void operator()(const CalibrateActionArea& action);
    void operator()(const GetRSSI& action);
    void operator()(const RadioState& action);
    void operator()(const Advertise& action);
    void operator()(const End& action);

    QXNearcastManager& manager_;
    VirtualPlatform& platform_;
    EventWriter& writer_;
};

}  // namespace nearcast::scenario
