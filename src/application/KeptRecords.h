// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/SettingRecord.h>

namespace nearcast {

/// What a settings file holds after a change of its registry: of each record that it has, only the keys whose values
/// the change has touched are written anew. A device type whose word is not known, which the registry does not hold,
/// stays.
/// @param members the file's content
/// @param before  the registry that it is read as
/// @param after   the registry that it is to be read as
SettingValue::Dictionary keptMembers(const SettingValue::Dictionary& members, const Settings& before,
                                     const Settings& after);

}  // namespace nearcast
