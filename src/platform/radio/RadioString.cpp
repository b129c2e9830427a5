// SPDX-License-Identifier: Apache-2.0
#include "platform/radio/RadioString.h"

#include "platform/radio/AdapterName.h"

#include <algorithm>
#include <span>
#include <stdexcept>

namespace nearcast {

namespace {

enum class Argument { none, optional, needed };

struct Kind {
    std::string_view name;
    Argument argument;
    std::string_view argumentMeaning;
    std::span<const std::string_view> options;
    bool (*fits)(std::string_view argument) = nullptr;  ///< whether an argument can be one; null: every one can
    bool file = false;                                  ///< the argument is a file's name
};

constexpr std::string_view hciOptions[] = {"beside"};
constexpr std::string_view simulatorOptions[] = {"seed", "speed"};
constexpr std::string_view replayOptions[] = {"as", "services", "speed"};

constexpr Kind allKinds[] = {
    {"auto", Argument::none, "", {}},
    {"bluez", Argument::optional, "an adapter, as in bluez:hci0 or bluez:00:1A:7D:DA:71:13", {}, namesAdapter},
    {"none", Argument::none, "", {}},
    {"hci", Argument::optional, "a controller's number", hciOptions},
    {"simulator", Argument::optional, "a scene file", simulatorOptions, nullptr, true},
    {"replay", Argument::needed, "a recording", replayOptions, nullptr, true},
};

[[noreturn]] void refuse(std::string_view text, const std::string& why) {
    throw std::invalid_argument("radio '" + std::string(text) + "': " + why);
}

const Kind& findKind(std::string_view text, std::string_view name) {
    const auto* const found =
        std::find_if(std::begin(allKinds), std::end(allKinds), [&](const Kind& kind) { return kind.name == name; });
    if (found != std::end(allKinds)) return *found;
    std::string known;
    for (const Kind& kind : allKinds) known.append(known.empty() ? "" : ", ").append(kind.name);
    refuse(text, "there is no radio '" + std::string(name) + "' (known: " + known + ")");
}

void addOption(RadioString& result, const Kind& kind, std::string_view word) {
    const auto equals = word.find('=');
    const std::string name(word.substr(0, equals));
    if (std::find(kind.options.begin(), kind.options.end(), name) == kind.options.end()) {
        refuse(result.text, "'" + result.kind + "' has no option '" + name + "'" +
                                (kind.file ? " (a question mark in a file's name is written \\?)" : ""));
    }
    const std::string value(equals == std::string_view::npos ? "" : word.substr(equals + 1));
    if (!result.options.emplace(name, value).second) refuse(result.text, "option '" + name + "' is given twice");
}

void checkArgument(const RadioString& result, const Kind& kind) {
    if (kind.argument == Argument::needed && result.argument.empty()) {
        refuse(result.text, "it needs " + std::string(kind.argumentMeaning) + ", as in " + result.kind + ":FILE");
    }
    if (kind.argument == Argument::none && !result.argument.empty()) refuse(result.text, "it takes no argument");
    if (kind.fits != nullptr && !result.argument.empty() && !kind.fits(result.argument)) {
        refuse(result.text, "'" + result.argument + "' is not " + std::string(kind.argumentMeaning));
    }
}

bool isEscape(std::string_view text) {
    return text.size() > 1 && text[0] == '\\' && (text[1] == '?' || text[1] == '\\');
}

/// Where the last question mark stands that is not escaped.
std::size_t beginOfOptions(std::string_view text) {
    std::size_t found = std::string_view::npos;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] == '?') found = place;
        if (isEscape(text.substr(place))) ++place;
    }
    return found;
}

std::string unescaped(std::string_view text) {
    std::string result;
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (isEscape(text.substr(place))) ++place;
        result.push_back(text[place]);
    }
    return result;
}

}  // namespace

RadioString RadioString::parse(std::string_view text) {
    RadioString result;
    result.text = text;
    const auto question = beginOfOptions(text);
    const std::string_view body = text.substr(0, question);
    const auto colon = body.find(':');
    result.kind = body.substr(0, colon);
    if (colon != std::string_view::npos) result.argument = unescaped(body.substr(colon + 1));
    const Kind& kind = findKind(text, result.kind);
    checkArgument(result, kind);
    // Not the same as without the colon: what was to stand there, a variable of a shell perhaps, was empty.
    if (colon != std::string_view::npos && result.argument.empty()) refuse(text, "nothing follows the colon");
    if (question == std::string_view::npos) return result;
    std::string_view rest = text.substr(question + 1);
    while (true) {
        const auto end = rest.find('&');
        addOption(result, kind, rest.substr(0, end));
        if (end == std::string_view::npos) return result;
        rest.remove_prefix(end + 1);
    }
}

std::vector<std::string> RadioString::kinds() {
    std::vector<std::string> names;
    for (const Kind& kind : allKinds) names.emplace_back(kind.name);
    return names;
}

std::string_view RadioString::option(std::string_view name, std::string_view otherwise) const {
    const auto found = options.find(name);
    return found == options.end() ? otherwise : std::string_view(found->second);
}

}  // namespace nearcast
