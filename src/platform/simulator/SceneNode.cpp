// SPDX-License-Identifier: Apache-2.0
#include "platform/simulator/SceneNode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace nearcast::simulator {

namespace {

constexpr std::size_t longestNameShown = 60;

bool isPlain(std::string_view name) {
    return !name.empty() && name.size() <= longestNameShown && std::all_of(name.begin(), name.end(), [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= '0' && letter <= '9') || letter == '_';
    });
}

/// A member's name that is fit for a terminal, whatever somebody wrote into the file.
std::string quoted(std::string_view name) {
    std::string result = "\"";
    for (const char letter : name.substr(0, longestNameShown)) {
        const bool visible = letter >= ' ' && letter <= '~' && letter != '"';
        result += visible ? letter : '?';
    }
    return result + (name.size() > longestNameShown ? "...\"" : "\"");
}

std::string span(const Range& range) {
    std::string text = "from " + written(range.lowest) + " to " + written(range.highest);
    if (!range.unit.empty()) text.append(" ").append(range.unit);
    return text;
}

std::string elements(std::size_t count) { return std::to_string(count) + (count == 1 ? " element" : " elements"); }

}  // namespace

std::string written(double number) {
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
    return {buffer.data(), end};
}

void SceneNode::refuse(const std::string& why) const { throw SceneError(path_ + ": " + why); }

std::string SceneNode::pathOf(std::string_view member) const {
    return isPlain(member) ? path_ + "." + std::string(member) : path_ + "[" + quoted(member) + "]";
}

std::optional<double> SceneNode::asNumber() const {
    if (const auto* number = value_->as<std::int64_t>()) return static_cast<double>(*number);
    if (const auto* number = value_->as<std::uint64_t>()) return static_cast<double>(*number);
    if (const auto* number = value_->as<double>()) return *number;
    return std::nullopt;
}

double SceneNode::number(const Range& range) const {
    const auto number = asNumber();
    if (!number) refuse("expected a number");
    if (!(*number >= range.lowest && *number <= range.highest)) {  // so put that what is no number is refused too
        refuse("expected a number " + span(range) + ", found " + written(*number));
    }
    return *number;
}

std::int64_t SceneNode::wholeNumber(const Range& range) const {
    const double result = number(range);
    if (result != std::floor(result)) refuse("expected a whole number, found " + written(result));
    return static_cast<std::int64_t>(result);
}

std::uint64_t SceneNode::unsignedNumber() const {
    if (const auto* number = value_->as<std::uint64_t>()) return *number;
    if (const auto* number = value_->as<std::int64_t>(); number != nullptr && *number >= 0) {
        return static_cast<std::uint64_t>(*number);
    }
    refuse("expected a whole number from 0 to 18446744073709551615");
}

bool SceneNode::boolean() const {
    const auto* const truth = value_->as<bool>();
    if (truth == nullptr) refuse("expected true or false");
    return *truth;
}

const std::string& SceneNode::text(std::size_t longest) const {
    const auto* const text = value_->as<std::string>();
    if (text == nullptr) refuse("expected a text");
    if (text->empty()) refuse("expected a text that is not empty");
    if (text->size() > longest) refuse("expected a text of at most " + std::to_string(longest) + " octets");
    return *text;
}

std::vector<SceneNode> SceneNode::list(std::size_t fewest, std::size_t most) const {
    const auto* const array = value_->as<SettingValue::Array>();
    if (array == nullptr) refuse("expected a list");
    const std::size_t size = array->size();
    if (fewest == most && size != most) refuse("expected a list of " + elements(most));
    if (size < fewest) refuse("expected a list of at least " + elements(fewest));
    if (size > most) refuse("expected a list of at most " + elements(most));
    std::vector<SceneNode> result;
    result.reserve(array->size());
    for (const SettingValue& element : *array) {
        result.emplace_back(element, path_ + "[" + std::to_string(result.size()) + "]");
    }
    return result;
}

void SceneNode::requireObject(std::initializer_list<std::string_view> known) const {
    const auto* const object = value_->as<SettingValue::Dictionary>();
    if (object == nullptr) refuse("expected an object");
    for (const auto& [name, value] : *object) {
        if (std::find(known.begin(), known.end(), name) != known.end()) continue;
        std::string names;
        for (const std::string_view possible : known) names.append(names.empty() ? "" : ", ").append(possible);
        SceneNode(value, pathOf(name)).refuse("there is no such member (known: " + names + ")");
    }
}

std::optional<SceneNode> SceneNode::member(std::string_view name) const {
    const auto* const object = value_->as<SettingValue::Dictionary>();
    if (object == nullptr) refuse("expected an object");
    const auto found = object->find(name);
    if (found == object->end() || found->second.as<std::nullptr_t>() != nullptr) return std::nullopt;
    return SceneNode(found->second, pathOf(name));
}

SceneNode SceneNode::need(std::string_view name) const {
    auto found = member(name);
    if (!found) throw SceneError(pathOf(name) + ": it is missing");
    return *std::move(found);
}

}  // namespace nearcast::simulator
