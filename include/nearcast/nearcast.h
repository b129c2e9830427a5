// SPDX-License-Identifier: Apache-2.0
#pragma once

// All of the public interface.

#include <nearcast/Version.h>

#include <nearcast/Address.h>
#include <nearcast/Device.h>
#include <nearcast/HeardAdvertisement.h>
#include <nearcast/LogWriter.h>
#include <nearcast/Nearest.h>
#include <nearcast/NearestSettings.h>
#include <nearcast/Platform.h>
#include <nearcast/PortException.h>
#include <nearcast/Proximity.h>
#include <nearcast/QXBluetoothManager.h>
#include <nearcast/QXNearcastManager.h>
#include <nearcast/RadioHealth.h>
#include <nearcast/SettingRecord.h>
#include <nearcast/SettingsFile.h>
