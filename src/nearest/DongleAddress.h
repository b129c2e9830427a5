// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <nearcast/HeardAdvertisement.h>

#include "support/AddressText.h"

#include <string>
#include <string_view>

namespace nearcast::nearest {

/// The address that an advertisement names a dongle by, as the manager reads it: from its manufacturer data, without a
/// heap, or else from its name.
class DongleAddress {
public:
    /// @return false when the manager would drop the advertisement
    bool read(const HeardAdvertisement& heard);
    /// Valid as long as this object stays as it is.
    [[nodiscard]] std::string_view text() const noexcept { return view_; }

private:
    bool readName(std::string_view name);

    AddressText formatted_;
    std::string fromName_;
    std::string_view view_;
};

}  // namespace nearcast::nearest
