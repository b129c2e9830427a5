// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Adapters.h"

#include <algorithm>
#include <fstream>
#include <system_error>

namespace nearcast::bluez {

namespace {

void apply(Adapter& adapter, const AdapterNews& news) {
    adapter.powered = news.powered.value_or(adapter.powered);
    adapter.discovering = news.discovering.value_or(adapter.discovering);
    adapter.powerState = news.powerState.value_or(adapter.powerState);
}

std::string firstWord(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string word;
    stream >> word;
    return word;
}

/// Whether the switch applies to the adapter: its own, or one that belongs to no adapter.
bool concerns(const std::filesystem::path& entry, std::string_view adapter) {
    if (firstWord(entry / "type") != "bluetooth") return false;
    const std::string name = firstWord(entry / "name");
    return name == adapter || !name.starts_with("hci");
}

Block blockOfSwitch(const std::filesystem::path& entry) {
    if (firstWord(entry / "hard") == "1") return Block::hard;
    return firstWord(entry / "soft") == "1" ? Block::soft : Block::none;
}

}  // namespace

std::string_view adapterName(std::string_view path) { return path.substr(path.rfind('/') + 1); }

bool Adapters::add(std::string_view path, const AdapterNews& news) {
    auto place = adapters_.find(path);
    if (place == adapters_.end()) {
        if (adapters_.size() >= most) return false;
        place = adapters_.emplace(path, Adapter()).first;
    }
    apply(place->second, news);
    choose();
    return true;
}

void Adapters::change(std::string_view path, const AdapterNews& news) {
    const auto place = adapters_.find(path);
    if (place == adapters_.end()) return;
    apply(place->second, news);
    choose();
}

void Adapters::offerMonitors(std::string_view path) {
    const auto place = adapters_.find(path);
    if (place != adapters_.end()) place->second.monitors = true;
}

void Adapters::remove(std::string_view path) {
    const auto place = adapters_.find(path);
    if (place == adapters_.end()) return;
    adapters_.erase(place);
    choose();
}

void Adapters::clear() {
    adapters_.clear();
    choose();
}

void Adapters::chooseAnew() {
    chosen_.clear();
    choose();
}

const Adapter* Adapters::current() const {
    const auto place = adapters_.find(chosen_);
    return place == adapters_.end() ? nullptr : &place->second;
}

std::string Adapters::names() const {
    std::string result;
    for (const auto& [path, adapter] : adapters_) result.append(result.empty() ? "" : ", ").append(adapterName(path));
    return result;
}

void Adapters::choose() {
    const auto powered = [](const auto& entry) { return entry.second.powered; };
    const auto ours = adapters_.find(chosen_);
    if (wanted_.empty() && ours != adapters_.end() && powered(*ours)) return;
    auto place = adapters_.begin();
    if (wanted_.empty()) {
        const auto first = std::find_if(adapters_.begin(), adapters_.end(), powered);
        if (first != adapters_.end()) place = first;
    } else {
        place = std::find_if(adapters_.begin(), adapters_.end(),
                             [this](const auto& entry) { return adapterName(entry.first) == wanted_; });
    }
    chosen_ = place == adapters_.end() ? std::string() : place->first;
}

Block Rfkill::blockOf(std::string_view adapter) const {
    Block result = Block::none;
    std::error_code none;
    for (std::filesystem::directory_iterator entry(folder_, none), end; !none && entry != end; entry.increment(none)) {
        if (concerns(entry->path(), adapter)) result = std::max(result, blockOfSwitch(entry->path()));
    }
    return result;
}

}  // namespace nearcast::bluez
