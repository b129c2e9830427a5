// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/QXNearcastManager.h>

#include "lab/EventWriter.h"
#include "lines/Line.h"
#include "platform/virtual/VirtualPlatform.h"

namespace nearcast::lab {

/// Performs the lines of a scenario: calls the manager, or makes the virtual radio hear something, and writes down what
/// the call returned.
class Performer {
public:
    /// All three outlive the performer.
    Performer(QXNearcastManager& manager, VirtualPlatform& platform, EventWriter& writer)
        : manager_(manager), platform_(platform), writer_(writer) {}

    /// An exception of the call is written down, not thrown, but for a lack of memory.
    void perform(const lines::Action& action);

private:
    [[nodiscard]] lines::Time now() { return platform_.timeline().now(); }

    void operator()(const lines::SharedManager& action);
    void operator()(const lines::SetDelegate& action);
    void operator()(const lines::AddSetting& action);
    void operator()(const lines::RemoveSetting& action);
    void operator()(const lines::ReadSettings& action);
    void operator()(const lines::SetSettings& action);
    void operator()(const lines::SerializeSettings& action);
    void operator()(const lines::DeserializeSettings& action);
    void operator()(const lines::StartScan& action);
    void operator()(const lines::StopScan& action);
    void operator()(const lines::CalibrateActionArea& action);
    void operator()(const lines::GetRSSI& action);
    void operator()(const lines::RadioState& action);
    void operator()(const lines::Advertise& action);
    void operator()(const lines::End& action);

    QXNearcastManager& manager_;
    VirtualPlatform& platform_;
    EventWriter& writer_;
};

}  // namespace nearcast::lab
