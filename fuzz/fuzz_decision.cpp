// SPDX-License-Identifier: Apache-2.0
// Who is nearest, under any settings and whatever is heard: what has to hold of each choice.
#include "Expect.h"
#include "nearest/Decision.h"
#include "platform/hciformat/ByteReader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace nearcast::fuzz {

namespace {

using namespace nearest;

/// The empty one is what a sender without a name has; of our records none names it.
const std::array<std::string, 5> addresses = {"02:00:00:00:00:01", "02:00:00:00:00:02", "02:00:00:00:00:03",
                                              "02:00:00:00:00:04", ""};

class Happenings {
public:
    explicit Happenings(std::span<const std::uint8_t> bytes)
        : input_(bytes), settings_(anySettings()), decision_(settings_) {
        setRegistry();
    }

    void play() {
        while (input_.left() > 0) {
            happen(input_.u8());
            check();
        }
    }

private:
    /// Each setting is its default, or anything that it may be.
    NearestSettings anySettings() {
        NearestSettings settings;
        for (const NearestSetting& setting : nearestSettings()) {
            const std::uint8_t part = input_.u8();
            if (part == 0) continue;
            settings.*setting.value = setting.least + (setting.most - setting.least) * part / 255;
        }
        return settings;
    }
    const std::string& anyAddress() { return addresses.at(input_.u8() % addresses.size()); }
    std::int32_t anySignal() { return input_.i8(); }

    void happen(std::uint8_t what) {
        const std::string& MACAddr = anyAddress();
        switch (what % 16) {
            case 0: return setRegistry();
            case 1: return setRadio();
            case 2: at_ += input_.u8() / 4.0; return decision_.pass(at_);
            case 3: return decision_.pass(at_ - input_.u8());
            case 4:
            case 5:
            case 6: return reported(MACAddr, anySignal());
            case 7:
                if (decision_.reported(at_, "Port " + MACAddr, MACAddr, anySignal())) noteHeard(MACAddr);
                return;
            case 8:
                for (int time = 0; time < 16; ++time) reported(MACAddr, -40 - time);
                return;
            default: decision_.heard(at_, MACAddr, anySignal()); noteHeard(MACAddr);
        }
    }
    void reported(const std::string& MACAddr, std::int32_t RSSI) {
        at_ += 1.0 / 16;
        decision_.reported(at_, MACAddr, RSSI);
        noteHeard(MACAddr);
    }
    void setRadio() {
        lost_ = true;
        hears_ = !hears_;
        radioSince_ = at_ - (input_.u8() % 4 == 0 ? 1 : 0);
        decision_.setRadio(at_, hears_, radioSince_);
    }
    void setRegistry() {
        known_.clear();
        const unsigned there = input_.u8();
        for (std::size_t index = 0; index < addresses.size(); ++index) {
            if ((there >> index & 1) == 0) known_["Port " + addresses.at(index)] = anyRecord(addresses.at(index));
        }
        if ((there & 64) != 0) known_["A twin"] = anyRecord(anyAddress());
        if ((there & 128) != 0) known_["Without a record"] = nullptr;
        lost_ = true;
        decision_.setRegistry(at_, known_);
    }
    void noteHeard(const std::string& MACAddr) {
        noteSilence();
        heardAt_[MACAddr] = at_;
    }
    /// A device that has been silent for long enough cannot be kept.
    void noteSilence() {
        const auto heard = heardAt_.find(named_.MACAddr);
        lost_ = lost_ || heard == heardAt_.end() || at_ - std::max(heard->second, radioSince_) >= settings_.silence;
    }
    SettingRecordPointer anyRecord(const std::string& MACAddr) {
        SettingRecord record;
        const std::uint8_t kind = input_.u8();
        if (!MACAddr.empty()) {
            record.emplace(kQXDongleMACAddr, MACAddr);
        } else if (kind % 4 != 0) {
            record.emplace(kQXDongleMACAddr, SettingValue(kind));
        }
        if (kind % 2 == 1) record.emplace(kQXThreshouldRSSI, std::int32_t{-75});
        return std::make_shared<const SettingRecord>(std::move(record));
    }

    void check() {
        decision_.pass(at_);
        const Device* const chosen = decision_.chosen();
        noteSilence();
        if (chosen != nullptr) checkChosen(*chosen);
        if (chosen != nullptr) checkDwell(*chosen);
        checkChoice(chosen);
        checkExplanations(chosen);
        checkChanges(chosen);
    }
    void checkChosen(const Device& chosen) {
        const auto record = known_.find(chosen.portName);
        expect(record != known_.end() && record->second != nullptr, "a device that is chosen is registered");
        const auto address = record->second->find(kQXDongleMACAddr);
        expect(address != record->second->end() && address->second == SettingValue(chosen.MACAddr),
               "a device that is chosen has a dongle");
        if (decision_.stale()) {
            expect(at_ - radioSince_ < (hears_ ? settings_.silence : settings_.staleFor), "nothing is stale for ever");
        } else {
            expect(hears_ && at_ - heardAt_.at(chosen.MACAddr) < settings_.silence, "what is chosen was just heard");
        }
    }
    /// From one device to another it takes the dwell time, unless the first cannot be kept.
    void checkDwell(const Device& chosen) {
        if (chosen.portName == named_.portName) return;
        const double since = decision_.choice().since;
        expect(lost_ || since - namedAt_ >= settings_.dwell, "a choice stays for the dwell time");
        named_ = chosen;
        namedAt_ = since;
        lost_ = false;
    }
    void checkChoice(const Device* chosen) const {
        const NearestChoice choice = decision_.choice();
        expect(choice.device.has_value() == (chosen != nullptr), "the choice is the chosen device");
        expect(!choice.device || choice.device->portName == chosen->portName, "and no other one");
        expect(!choice.runnerUp || !choice.device || choice.runnerUp->portName != chosen->portName,
               "nobody is behind itself");
        expect(choice.distance.has_value() == (choice.device && choice.runnerUp), "a distance is between two");
        expect(!choice.distance || std::isfinite(*choice.distance), "a distance is a number");
        expect(!choice.stale || choice.device, "only a choice is stale");
        expect(std::isfinite(choice.since) && choice.since <= at_, "a choice was made before now");
        expect(!choice.text().empty(), "a choice can be told");
    }
    void checkExplanations(const Device* chosen) const {
        std::size_t marked = 0;
        for (const NearestExplanation& one : decision_.explain(at_)) {
            marked += one.chosen ? 1 : 0;
            expect(one.chosen == one.missing.empty(), "whoever is not chosen lacks something");
            constexpr double rounding = 1e-9;
            expect(!one.level || (*one.level >= -127 - rounding && *one.level <= 20 + rounding),
                   "a level is among what was heard");
        }
        expect(marked == (chosen != nullptr ? 1U : 0U), "one is chosen");
    }
    void checkChanges(const Device* chosen) {
        const std::string now =
            chosen == nullptr ? std::string() : chosen->portName + (decision_.stale() ? ", stale" : "");
        expect(now == before_ || decision_.changes() > changes_, "a change is counted");
        before_ = now;
        changes_ = decision_.changes();
    }

    ByteReader input_;
    NearestSettings settings_;
    Decision decision_;
    Settings known_;
    double at_ = 0;
    bool hears_ = true;
    double radioSince_ = -std::numeric_limits<double>::infinity();
    std::map<std::string, double> heardAt_;
    Device named_;        ///< the last one that was chosen
    double namedAt_ = 0;  ///< since when it was
    bool lost_ = true;    ///< whether it could not be kept since
    std::string before_;
    std::uint64_t changes_ = 0;
};

}  // namespace

}  // namespace nearcast::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    nearcast::fuzz::Happenings({data, size}).play();
    return 0;
}
