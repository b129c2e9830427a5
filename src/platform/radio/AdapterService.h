// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace nearcast {

/// The service that has the machine's adapters beside us, as far as one is concerned that is taken from it and given
/// back. Where it is set to, it switches on each adapter that it gets, also one that it had switched off before.
///
/// Each operation waits for the service, some seconds at most, and never starts it. One thread at a time.
class AdapterService {
public:
    virtual ~AdapterService() = default;

    /// Whether it has this adapter switched off, and would switch it on when it gets it back.
    /// @param adapter "hci0"
    virtual bool turnsOn(const std::string& adapter) = 0;
    /// Switches the adapter off, unless somebody discovers by it.
    /// @return whether it is off
    virtual bool turnOff(const std::string& adapter) = 0;
    /// Waits until it has switched on an adapter that it got back just now, and switches it off, as above.
    virtual void leaveOff(const std::string& adapter) = 0;
};

}  // namespace nearcast
