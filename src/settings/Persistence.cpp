// SPDX-License-Identifier: Apache-2.0
#include "core/Manager.h"
#include "settings/SavedSettings.h"

namespace nearcast {

std::shared_ptr<const Settings> Manager::snapshot() {
    return std::make_shared<const Settings>(mutableSettings.records());
}

std::shared_ptr<const Settings> Manager::getSettings() {
    const Trace trace = this->trace("-[QXNearcastManager getSettings]", Trace::Audience::internal);
    trace.start("");
    const NSLockGuard guard(_lockMutableSettingsFlag);
    auto settings = snapshot();
    trace.end("", Pointer{settings.get()});
    return settings;
}

void Manager::setSettings(std::optional<Settings> settings) {
    const Trace trace = this->trace("-[QXNearcastManager setSettings:]", Trace::Audience::internal);
    trace.start("", Pointer{settings ? &*settings : nullptr});
    Registry next = settings ? Registry(std::move(*settings)) : Registry();
    {
        const NSLockGuard guard(_lockMutableSettingsFlag);
        mutableSettings.swap(next);
    }
    trace.end("");
}

std::optional<std::string> Manager::serializedSettings() {
    const Trace trace = this->trace("-[QXNearcastManager serializedSettings]", Trace::Audience::publicAPI);
    trace.start("");
    std::optional<std::string> data;
    {
        const NSLockGuard guard(_lockMutableSettingsFlag);
        data = savedSettings(mutableSettings.records(), platform_.JSON());
        if (!data) {
            const SettingValue copiedSettings = savedValue(mutableSettings.records());
            trace.process("[NSJSONSerialization isValidJSONObject:copiedSettings] == NO, ", Pointer{&copiedSettings});
            console(platform_.JSON().description(copiedSettings) + " is not JSONSerializable");
        }
    }
    trace.end("-> ", Pointer{data ? data->data() : nullptr});
    return data;
}

bool Manager::deserializeSettings(std::optional<std::string_view> data) {
    const Trace trace = this->trace("-[QXNearcastManager deserializeSettings:]", Trace::Audience::publicAPI);
    const Pointer buffer{data ? data->data() : nullptr};
    trace.start("", buffer);
    auto settings = data ? loadedSettings(*data, platform_.JSON()) : std::nullopt;
    if (!settings) {
        trace.error("results == nil, ", Pointer{nullptr});
        trace.end("", buffer, ", -> ", false);
        return false;
    }
    setSettings(std::move(settings));
    trace.end("", buffer, ", -> ", true);
    return true;
}

}  // namespace nearcast
