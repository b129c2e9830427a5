// SPDX-License-Identifier: Apache-2.0
#include "lab/controller/Console.h"

#include "lab/controller/DongleReader.h"

#include <exception>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace nearcast::lab {

namespace {

const std::string& argument(const std::vector<std::string>& words) {
    if (words.size() < 2) throw std::invalid_argument("'" + words.front() + "' wants a word more");
    return words[1];
}

bool readOn(const std::string& text) {
    if (text != "on" && text != "off") throw std::invalid_argument("'" + text + "' is neither on nor off");
    return text == "on";
}

void expectDongle(bool found, const std::string& name) {
    if (!found) throw std::invalid_argument("there is no dongle '" + name + "'");
}

const char* truth(bool value) { return value ? "true" : "false"; }

}  // namespace

std::string Console::obey(std::string_view line, Time now) {
    try {
        const Words said = words(line);
        if (said.empty()) throw std::invalid_argument("nothing was said");
        const std::string result = carryOut(said, now);
        return result.empty() ? "ok" : "ok " + result;
    } catch (const std::exception& error) {
        return std::string("error ") + error.what();
    }
}

std::string Console::carryOut(const Words& said, Time now) {
    const std::string& verb = said.front();
    if (verb == "plug") return plug(said);
    if (verb == "unplug") {
        device_.unplug();
        controller_.reset();
    } else if (verb == "dongle") {
        air_.put(argument(said), readDongle(Words(said.begin() + 2, said.end())), now);
    } else if (verb == "remove") {
        expectDongle(air_.remove(argument(said)), argument(said));
    } else if (verb == "silence" || verb == "speak") {
        expectDongle(air_.silence(argument(said), verb == "silence"), argument(said));
    } else if (verb == "mute") {
        mute_ = readOn(argument(said));
    } else if (verb == "deaf") {
        air_.setDeaf(readOn(argument(said)));
    } else if (verb == "counters") {
        return counters();
    } else {
        throw std::invalid_argument("there is no command '" + verb + "'");
    }
    return {};
}

std::string Console::plug(const Words& said) {
    ControllerKind kind;
    bool strict = false;
    for (std::size_t i = 1; i < said.size(); ++i) {
        const std::string& word = said[i];
        if (word == "extended" || word == "legacy" || word == "classic") {
            kind.extended = word == "extended";
            kind.classic = word == "classic";
        } else if (word == "strict") {
            strict = true;
        } else if (word.starts_with("address=")) {
            kind.address = readAddress(word.substr(word.find('=') + 1));
        } else {
            throw std::invalid_argument("a controller has no '" + word + "'");
        }
    }
    device_.unplug();
    controller_.emplace(kind);
    air_.setStrict(strict);
    return std::to_string(device_.plug());
}

std::string Console::counters() const {
    const Scan scan = controller_ ? controller_->scan() : Scan();
    std::ostringstream out;
    out << "{\"plugged\":" << truth(device_.plugged()) << ",\"scanning\":" << truth(scan.enabled)
        << ",\"active\":" << truth(scan.active) << ",\"filterDuplicates\":" << truth(scan.filterDuplicates)
        << ",\"extended\":" << truth(scan.extended) << ",\"scanEnables\":" << scan.enables
        << ",\"commands\":" << commands_ << ",\"unknown\":{";
    const char* comma = "";
    if (controller_) {
        for (const auto& [opcode, count] : controller_->unknown()) {
            out << std::exchange(comma, ",") << '"' << opcode << "\":" << count;
        }
    }
    out << "},\"dongles\":{";
    comma = "";
    for (const auto& [name, tally] : air_.tallies()) {
        out << std::exchange(comma, ",") << '"' << name << "\":{\"aired\":" << tally.aired
            << ",\"reported\":" << tally.reported << '}';
    }
    out << "}}";
    return out.str();
}

void Console::command(std::span<const std::uint8_t> packet) {
    ++commands_;
    if (mute_ || !controller_) return;
    if (const std::optional<Bytes> event = controller_->answer(packet)) send(*event);
}

void Console::advance(Time now) {
    Scan scan;
    if (controller_ && device_.plugged() && !mute_) scan = controller_->scan();
    air_.advance(now, scan, [this](const Bytes& event) { send(event); });
}

void Console::send(const Bytes& event) { device_.send(event); }

}  // namespace nearcast::lab
