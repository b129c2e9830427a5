// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace nearcast::lab {

/// HCI commands (Core Specification, Volume 4, Part E, 7.3, 7.4 and 7.8) that the controller knows.
enum Opcode : unsigned {
    hostSettings = 0x0c00,  ///< the group that settings of the host belong to
    setEventMask = 0x0c01,
    reset = 0x0c03,
    readLocalName = 0x0c14,
    readDeviceClass = 0x0c23,
    readVoiceSetting = 0x0c25,
    readInquiryCodes = 0x0c38,
    readCurrentInquiryCodes = 0x0c39,
    readLocalVersion = 0x1001,
    readLocalCommands = 0x1002,
    readLocalFeatures = 0x1003,
    readBufferSize = 0x1005,
    readAddress = 0x1009,
    leSetEventMask = 0x2001,
    leReadBufferSize = 0x2002,
    leReadLocalFeatures = 0x2003,
    leSetRandomAddress = 0x2005,
    leSetAdvertisingParameters = 0x2006,
    leReadAdvertisingPower = 0x2007,
    leSetAdvertisingData = 0x2008,
    leSetScanResponseData = 0x2009,
    leSetAdvertisingEnable = 0x200a,
    leSetScanParameters = 0x200b,
    leSetScanEnable = 0x200c,
    leReadAcceptListSize = 0x200f,
    leClearAcceptList = 0x2010,
    leAddToAcceptList = 0x2011,
    leRemoveFromAcceptList = 0x2012,
    leReadSupportedStates = 0x201c,
    leSetAdvertisingSetRandomAddress = 0x2035,
    leSetExtendedAdvertisingParameters = 0x2036,
    leSetExtendedAdvertisingData = 0x2037,
    leSetExtendedScanResponseData = 0x2038,
    leSetExtendedAdvertisingEnable = 0x2039,
    leReadNumberOfAdvertisingSets = 0x203b,
    leRemoveAdvertisingSet = 0x203c,
    leClearAdvertisingSets = 0x203d,
    leSetExtendedScanParameters = 0x2041,
    leSetExtendedScanEnable = 0x2042,
};

}  // namespace nearcast::lab
