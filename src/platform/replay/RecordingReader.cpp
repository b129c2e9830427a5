// SPDX-License-Identifier: Apache-2.0
#include "platform/replay/RecordingReader.h"

#include "lines/Line.h"
#include "platform/replay/Btsnoop.h"
#include "platform/replay/CaptureReader.h"
#include "platform/replay/JsonLines.h"
#include "platform/replay/PcapReader.h"
#include "platform/replay/PcapngReader.h"
#include "platform/replay/RecordingInput.h"
#include "support/Dongle.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace nearcast::replay {

namespace {

using Bytes = std::span<const std::uint8_t>;

/// A reader with the bytes it reads. It keeps the promise that damage is told once and nothing comes after it.
class OwningReader : public RecordingReader {
public:
    explicit OwningReader(std::unique_ptr<RecordingInput> input) : input_(std::move(input)) {}

    void open(const std::string& name);

    [[nodiscard]] std::optional<std::chrono::microseconds> begin() const override {
        return reader_ ? reader_->begin() : std::nullopt;
    }
    std::optional<RecordedItem> next() override {
        if (damage_) {
            ended_ = true;
            throw RecordingDamage(*std::exchange(damage_, std::nullopt));
        }
        if (ended_) return std::nullopt;
        try {
            auto item = reader_->next();
            ended_ = !item;
            return item;
        } catch (const std::system_error& error) {
            ended_ = true;
            throw RecordingDamage(input_->offset(), error.code().message());
        } catch (const RecordingDamage&) {
            ended_ = true;
            if (inputsEnded()) return std::nullopt;  // it was cut because nobody waits for the rest
            throw;
        } catch (...) {
            ended_ = true;
            throw;
        }
    }

private:
    std::unique_ptr<RecordingReader> openFormat(const std::string& name);

    std::unique_ptr<RecordingInput> input_;
    std::unique_ptr<RecordingReader> reader_;
    std::optional<RecordingDamage> damage_;  // of the file's header
    bool ended_ = false;
};

/// Whether the bytes are the first ones of `magic`: all of it, or all that a cut file has.
template <std::size_t size>
bool beginsLike(Bytes bytes, const std::array<std::uint8_t, size>& magic) {
    const std::size_t count = std::min(bytes.size(), size);
    return std::equal(magic.begin(), magic.begin() + static_cast<std::ptrdiff_t>(count), bytes.begin());
}

constexpr std::array<std::uint8_t, 3> byteOrderMark{0xEF, 0xBB, 0xBF};

/// What follows a byte order mark and white space.
Bytes withoutLeadingSpace(Bytes bytes) {
    if (beginsLike(bytes, byteOrderMark)) bytes = bytes.subspan(std::min(bytes.size(), byteOrderMark.size()));
    const auto first = std::find_if(bytes.begin(), bytes.end(), [](std::uint8_t octet) {
        return octet != ' ' && octet != '\t' && octet != '\r' && octet != '\n';
    });
    return bytes.subspan(static_cast<std::size_t>(first - bytes.begin()));
}

void OwningReader::open(const std::string& name) {
    try {
        reader_ = openFormat(name);
    } catch (const RecordingDamage& damage) {
        damage_ = damage;
    }
}

std::unique_ptr<RecordingReader> OwningReader::openFormat(const std::string& name) {
    if (holdsJSONLines(*input_)) return std::make_unique<JsonLinesReader>(*input_);
    const Bytes bytes = input_->peek(btsnoopMagic.size());
    std::unique_ptr<PacketSource> packets;
    if (beginsLike(bytes, pcapngMagic)) {
        packets = std::make_unique<PcapngReader>(*input_);
    } else if (beginsLike(bytes, btsnoopMagic)) {
        packets = std::make_unique<BtsnoopReader>(*input_, name);
    } else if (const auto form = pcapForm(bytes)) {
        packets = std::make_unique<PcapReader>(*input_, *form, name);
    } else {
        throw NoRecording(name + ": no recording (neither JSON Lines nor btsnoop, pcap or pcapng)");
    }
    return std::make_unique<CaptureReader>(std::move(packets));
}

/// Whether the option is there, which knows one value only.
bool isGiven(const RadioString& radio, std::string_view name, std::string_view onlyValue) {
    const auto option = radio.options.find(name);
    if (option == radio.options.end()) return false;
    if (option->second == onlyValue) return true;
    throw std::invalid_argument("radio '" + radio.text + "': option '" + std::string(name) + "' can be '" +
                                std::string(onlyValue) + "' only, not '" + option->second + "'");
}

void addDongleService(std::vector<CBUUID>& services) {
    static const CBUUID dongleService = CBUUID::UUIDWithString(dongle::serviceUUID);
    if (std::find(services.begin(), services.end(), dongleService) == services.end()) services.push_back(dongleService);
}

}  // namespace

RecordingDamage::RecordingDamage(std::uint64_t offset, const std::string& what)
    : std::runtime_error("damaged at byte " + std::to_string(offset) + ": " + what), offset_(offset) {}

std::chrono::microseconds timeOf(const RecordedItem& item) {
    return std::visit([](const auto& one) { return one.at; }, item);
}

bool holdsJSONLines(RecordingInput& input) {
    constexpr std::size_t most = 4096;
    for (std::size_t count = btsnoopMagic.size();; count *= 2) {
        const Bytes bytes = input.peek(count);
        // pcapng begins with white space of its own; a single line feed is no sign of it.
        if (bytes.size() > 1 && beginsLike(bytes, pcapngMagic)) return false;
        const Bytes rest = withoutLeadingSpace(bytes);
        if (!rest.empty()) return rest.front() == '{';
        if (bytes.size() < count || count >= most) return true;
    }
}

std::unique_ptr<RecordingReader> openRecording(const std::string& path) {
    return openRecording(openInput(path), nameOfInput(path));
}

std::unique_ptr<RecordingReader> openRecording(ByteSource source, const std::string& name) {
    return openRecording(std::make_unique<RecordingInput>(unpacked(std::move(source), name)), name);
}

std::unique_ptr<RecordingReader> openRecording(std::unique_ptr<RecordingInput> input, const std::string& name) {
    auto reader = std::make_unique<OwningReader>(std::move(input));
    reader->open(name);
    return reader;
}

RecordingOptions RecordingOptions::parse(const RadioString& radio) {
    return {.anyService = isGiven(radio, "services", "any"), .asDongles = isGiven(radio, "as", "dongles")};
}

void RecordingOptions::apply(RecordedReport& report) const {
    if (anyService) addDongleService(report.report.services);
    if (!asDongles || !report.report.address) return;
    addDongleService(report.report.services);
    report.report.manufacturerData = dongle::payloadOf(*report.report.address);
}

}  // namespace nearcast::replay
