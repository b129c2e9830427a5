// SPDX-License-Identifier: Apache-2.0
#include "platform/json/JSONSerialization.h"
#include "platform/json/Mistake.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace nearcast {

namespace {

using Library = nlohmann::json;

constexpr int numberOutOfRange = 406;  // as the library numbers its errors

/// Builds a `SettingValue` from the library's events, so that no second tree is made on the way.
class Builder : public nlohmann::json_sax<Library> {
public:
    explicit Builder(std::string_view data) : data_(data) {}

    bool null() override { return add(SettingValue(nullptr)); }
    bool boolean(bool value) override { return add(SettingValue(value)); }
    bool number_integer(std::int64_t value) override { return add(SettingValue(static_cast<long long>(value))); }
    bool number_unsigned(std::uint64_t value) override {
        return add(SettingValue(static_cast<unsigned long long>(value)));
    }
    bool number_float(double value, const std::string& /*text*/) override { return add(SettingValue(value)); }
    bool string(std::string& value) override { return add(SettingValue(std::move(value))); }
    bool binary(binary_t& /*value*/) override { return false; }  // not in text

    bool start_object(std::size_t /*members*/) override { return open(Open{SettingValue::Dictionary{}, {}, {}, true}); }
    bool key(std::string& value) override {
        open_.back().key = std::move(value);
        return true;
    }
    bool end_object() override {
        Open done = std::move(open_.back());
        open_.pop_back();
        return add(SettingValue(std::move(done.members)));
    }
    bool start_array(std::size_t /*elements*/) override { return open(Open{{}, SettingValue::Array{}, {}, false}); }
    bool end_array() override {
        Open done = std::move(open_.back());
        open_.pop_back();
        return add(SettingValue(std::move(done.elements)));
    }

    /// @param position octets that were read, the one included that is wrong; beyond the text it counts its end
    bool parse_error(std::size_t position, const std::string& token,
                     const nlohmann::detail::exception& error) override {
        LastRead read{.last = position > 0 ? position - 1 : 0, .complete = complete_};
        read.length = lengthOfToken(token);
        if (read.length != 0) read.kind = LastRead::Kind::token;
        if (error.id == numberOutOfRange) {
            read.kind = LastRead::Kind::number;
            read.length = token.size();
        }
        problem_ = mistakeAt(data_, read);
        return false;
    }

    std::variant<SettingValue, JSONProblem> result() && {
        if (problem_) return *std::move(problem_);
        return std::move(top_);
    }

private:
    struct Open {
        SettingValue::Dictionary members;
        SettingValue::Array elements;
        std::string key;
        bool isObject;
    };

    bool open(Open next) {
        if (open_.size() == static_cast<std::size_t>(JSONSerialization::maximumDepth)) {
            problem_ = tooDeep(data_, JSONSerialization::maximumDepth);
            return false;
        }
        open_.push_back(std::move(next));
        return true;
    }

    bool add(SettingValue value) {
        if (open_.empty()) {
            top_ = std::move(value);
            complete_ = true;
        } else if (open_.back().isObject) {
            // At the end, where a member of a text that we wrote belongs: its keys come in order.
            auto& members = open_.back().members;
            members.insert_or_assign(members.end(), std::move(open_.back().key), std::move(value));
        } else {
            open_.back().elements.push_back(std::move(value));
        }
        return true;
    }

    /// The octets of a whole token, which may only not stand there; 0 where what was read last is none.
    /// @param text what the library has read, which before a literal is more than that
    static std::size_t lengthOfToken(std::string_view text) {
        constexpr std::string_view signs = "[]{}:,";
        for (const std::string_view literal : {"true", "false", "null"}) {
            if (text.ends_with(literal)) return literal.size();
        }
        const bool isSign = text.size() == 1 && signs.find(text.front()) != std::string_view::npos;
        return isSign || Library::accept(text) ? text.size() : 0;
    }

    std::string_view data_;
    std::vector<Open> open_;
    SettingValue top_;
    bool complete_ = false;  ///< the value has been read to its end
    std::optional<JSONProblem> problem_;
};

}  // namespace

std::variant<SettingValue, JSONProblem> JSONSerialization::parse(std::string_view data) {
    // The library takes a zero octet for the end of the text.
    if (const auto zero = data.find('\0'); zero != std::string_view::npos) {
        return JSONProblem{zero, "a zero octet stands in the text"};
    }
    if (data.empty()) return JSONProblem{0, "there is no text"};
    Builder builder(data);
    Library::sax_parse(data.begin(), data.end(), &builder);
    return std::move(builder).result();
}

std::optional<SettingValue> JSONSerialization::JSONObjectWithData(std::string_view data) const {
    auto result = parse(data);
    if (auto* value = std::get_if<SettingValue>(&result)) return std::move(*value);
    return std::nullopt;
}

}  // namespace nearcast
