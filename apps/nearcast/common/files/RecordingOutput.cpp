// SPDX-License-Identifier: Apache-2.0
#include "common/files/RecordingOutput.h"

#include "common/Output.h"
#include "common/UsageError.h"

#include <sys/stat.h>
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iterator>
#include <utility>

namespace nearcast::cli {

namespace {

using Format = RecordingForm::Format;

constexpr std::pair<std::string_view, Format> formats[] = {
    {"jsonl", Format::jsonLines}, {"btsnoop", Format::btsnoop}, {"pcapng", Format::pcapng}};
constexpr std::string_view gzipEnding = ".gz";
constexpr const char* knownFormats = "jsonl, btsnoop or pcapng, each also with .gz";

/// ASCII alone, whatever the locale.
std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + 32) : letter;
    });
    return text;
}

/// The form that a name such as "jsonl.gz" has.
std::optional<RecordingForm> formNamed(std::string_view name) {
    RecordingForm form;
    form.packed = name.ends_with(gzipEnding);
    if (form.packed) name.remove_suffix(gzipEnding.size());
    const auto* const found =
        std::find_if(std::begin(formats), std::end(formats), [&](const auto& one) { return one.first == name; });
    if (found == std::end(formats)) return std::nullopt;
    form.format = found->second;
    return form;
}

/// The ending of a file's name: what follows its last dot, or with .gz the last but one.
std::string endingOf(const std::string& path) {
    const std::string name = lowerCase(std::filesystem::path(path).filename().string());
    const bool packed = name.ends_with(gzipEnding);
    const auto dot = name.substr(0, name.size() - (packed ? gzipEnding.size() : 0)).rfind('.');
    if (dot != std::string::npos) return name.substr(dot);
    return packed ? std::string(gzipEnding) : "";
}

/// A device, a pipe: what its name ends in says nothing.
bool isNoRegularFile(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

std::optional<RecordingForm> formOfEnding(const std::string& output) {
    if (isStandardOutput(output) || isNoRegularFile(output)) return std::nullopt;
    const std::string ending = endingOf(output);
    if (ending.empty()) return std::nullopt;
    if (auto form = formNamed(std::string_view(ending).substr(1))) return form;
    throw UsageError(output + ": its ending says no format (known: .jsonl, .btsnoop and .pcapng, each also with .gz)");
}

/// What is wrong with a text as an option `--format`; empty where nothing is.
std::string problemWithFormat(const std::string& text) {
    if (text.empty()) return "is empty";
    if (formNamed(lowerCase(text))) return "";
    return "there is no format '" + text + "' (known: " + knownFormats + ")";
}

std::optional<RecordingForm> formOfOption(const std::string& format) {
    if (format.empty()) return std::nullopt;
    if (auto form = formNamed(lowerCase(format))) return form;
    throw UsageError(problemWithFormat(format));
}

}  // namespace

void addRecordingOptions(CLI::App& command, const std::string& file, std::string& output, std::string& format) {
    command
        .add_option("-o,--output", output,
                    file +
                        "; its name ends in .jsonl, .btsnoop or .pcapng, or these with .gz; standard output if absent "
                        "or -")
        ->type_name("FILE")
        ->check(problemWithOutput);
    command
        .add_option("--format", format, std::string("What standard output gets: ") + knownFormats + "; jsonl if absent")
        ->type_name("FORMAT")
        ->check(problemWithFormat);
}

RecordingForm recordingFormOf(const std::string& output, const std::string& format) {
    const auto asked = formOfOption(format);
    const auto ending = formOfEnding(output);
    if (asked && ending && *asked != *ending) {
        throw UsageError(output + ": its ending says another format than '" + format + "'");
    }
    const RecordingForm form = ending.value_or(asked.value_or(RecordingForm()));
    const bool text = form.format == Format::jsonLines && !form.packed;
    if (!text && isTerminal(output)) {
        throw UsageError("'" + format + "' is not for a terminal; name a file with --output");
    }
    return form;
}

RecordingOutput::RecordingOutput(RecordingForm form, Sink sink, bool eachAtOnce) : form_(form), sink_(std::move(sink)) {
    if (form_.packed) packing_.emplace(sink_, eachAtOnce);
}

std::unique_ptr<replay::RecordingWriter> RecordingOutput::writer(std::chrono::microseconds begin) {
    const auto out = [this](std::string_view bytes) { packing_ ? packing_->write(bytes) : sink_(bytes); };
    switch (form_.format) {
        case Format::btsnoop: return replay::makeBtsnoopWriter(out, begin);
        case Format::pcapng: return replay::makePcapngWriter(out, begin);
        case Format::jsonLines: break;
    }
    return replay::makeJsonLinesWriter(out);
}

void RecordingOutput::finish() {
    if (packing_) packing_->finish();
}

}  // namespace nearcast::cli
