// SPDX-License-Identifier: Apache-2.0
#include "platform/bluez/Adapters.h"

#include "platform/radio/AdapterName.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>

namespace nearcast::bluez {

namespace {

void apply(Adapter& adapter, const AdapterNews& news) {
    adapter.powered = news.powered.value_or(adapter.powered);
    adapter.discovering = news.discovering.value_or(adapter.discovering);
    adapter.powerState = news.powerState.value_or(adapter.powerState);
    adapter.lowEnergy = news.central.value_or(adapter.lowEnergy);
    if (news.address) adapter.address = adapterAddress(*news.address);
}

int worth(const Adapter& adapter) { return worthOf(adapter.lowEnergy, adapter.powered); }

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

Adapters::Adapters(std::string wanted)
    : wanted_(isAdapterNumber(wanted) ? std::move(wanted) : adapterAddress(wanted)),
      byAddress_(!wanted_.empty() && !isAdapterNumber(wanted_)) {}

bool Adapters::add(std::string_view path, const AdapterNews& news) {
    auto place = adapters_.find(path);
    if (place == adapters_.end()) {
        if (adapters_.size() >= most) return false;
        place = adapters_.emplace(path, Adapter()).first;
    }
    apply(place->second, news);
    note(*place);
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
    for (const auto& [path, adapter] : adapters_) {
        result.append(result.empty() ? "" : ", ").append(adapterName(path));
        if (byAddress_ && !adapter.address.empty()) result.append(" ").append(adapter.address);
    }
    return result;
}

std::string Adapters::renumbered() const {
    if (first_.empty()) return {};
    std::string result;
    for (const auto& [path, adapter] : adapters_) {
        if (adapter.address != first_) continue;
        if (adapterName(path) == wanted_) return {};
        if (result.empty()) result.append(adapterName(path)).append(" now (bluez:" + first_ + " follows it)");
    }
    return result;
}

bool Adapters::isWanted(const Map::value_type& entry) const {
    if (wanted_.empty()) return true;
    return byAddress_ ? entry.second.address == wanted_ : adapterName(entry.first) == wanted_;
}

void Adapters::note(const Map::value_type& entry) {
    if (first_.empty() && !byAddress_ && adapterName(entry.first) == wanted_) first_ = entry.second.address;
}

void Adapters::choose() {
    auto best = adapters_.end();
    for (auto one = adapters_.begin(); one != adapters_.end(); ++one) {
        if (!isWanted(*one)) continue;
        if (best == adapters_.end() || worth(one->second) > worth(best->second)) best = one;
    }
    const auto ours = adapters_.find(chosen_);
    // A change costs reports, so there has to be something to win.
    if (ours != adapters_.end() && isWanted(*ours) && worth(ours->second) == worth(best->second)) return;
    chosen_ = best == adapters_.end() ? std::string() : best->first;
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
