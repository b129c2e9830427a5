// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nearcast::scenario {

using Event = nlohmann::json;
using Events = std::vector<Event>;

/// The events of an output, one JSON object a line.
/// @throws nlohmann::json::exception for a line that is none
Events readEvents(std::string_view lines);

/// Where what was shown differs from what was expected, in words; nothing where they agree. What may differ:
///
/// - a pointer in a trace text is expected as `<ptr>`; a text of null, and all of a raise without a name but that it is
///   no `PortException`, are free; a time may be written 5 or 5.0; the members of an object have no order;
/// - the reports of one sweep, each with its look-ups, have no order;
/// - where a registration looks at the registry's keys it may take and release the registry lock, or not;
/// - an exit record and the release of a lock beside it have no order;
/// - what `serializedSettings` returns is compared as JSON, and indented.
std::optional<std::string> difference(Events actual, Events expected);

}  // namespace nearcast::scenario
