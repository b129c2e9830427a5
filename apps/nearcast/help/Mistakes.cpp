// SPDX-License-Identifier: Apache-2.0
#include "help/Mistakes.h"

#include "common/radio/RadioOption.h"
#include "help/HelpText.h"
#include "help/Suggestion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <vector>

namespace nearcast::cli {

namespace {

using Words = std::vector<std::string>;

/// What commands are called elsewhere.
struct OtherName {
    std::string_view name;
    std::string_view command;
};
constexpr OtherName otherNames[] = {
    {"scan", "watch"},   {"listen", "watch"},    {"monitor", "watch"},  {"show", "watch"},      {"start", "watch"},
    {"play", "watch"},   {"replay", "watch"},    {"simulate", "watch"}, {"capture", "record"},  {"save", "record"},
    {"sniff", "record"}, {"convert", "import"},  {"list", "radios"},    {"adapters", "radios"}, {"devices", "radios"},
    {"check", "doctor"}, {"diagnose", "doctor"}, {"status", "doctor"},  {"score", "evaluate"},  {"compare", "evaluate"},
    {"page", "report"},  {"plot", "report"},
};

std::string inQuotes(const std::string& text) { return "'" + text + "'"; }

/// "a, b and c"
std::string listed(const Words& words, const char* last = " and ") {
    std::string list;
    for (std::size_t place = 0; place < words.size(); ++place) {
        if (place != 0) list.append(place + 1 == words.size() ? last : ", ");
        list.append(words[place]);
    }
    return list;
}

Words commandsOf(const CLI::App& program) {
    Words names;
    for (const CLI::App* command : program.get_subcommands({})) names.push_back(command->get_name());
    return names;
}

Words commandsWith(const CLI::App& program, const std::string& option) {
    Words names;
    for (const CLI::App* command : program.get_subcommands({})) {
        if (command->get_option_no_throw(option) != nullptr) names.push_back(command->get_name());
    }
    return names;
}

Words optionsOf(const CLI::App& place) {
    Words names;
    for (const CLI::Option* option : place.get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
    return names;
}

bool isOption(const std::string& word) { return word.size() > 1 && word[0] == '-'; }

std::string withoutValue(const std::string& option) { return option.substr(0, option.find('=')); }

/// The short option that differs only in its case.
std::string inOtherCase(const CLI::App& place, std::string option) {
    if (option.size() != 2) return "";
    option[1] = static_cast<char>(option[1] ^ 0x20);
    return place.get_option_no_throw(option) != nullptr ? option : "";
}

std::string unknownOption(const CLI::App& program, const CLI::App& place, const std::string& option) {
    std::string none = "there is no option " + inQuotes(option);
    const bool ofProgram = &program == &place;
    const Words having = commandsWith(program, option);
    if (ofProgram && !having.empty()) {
        return none + " before a command; " + listed(having) + (having.size() == 1 ? " has" : " have") +
               " it, as in 'nearcast " + having.front() + " " + option + "'";
    }
    std::string meant = inOtherCase(place, option);
    if (meant.empty()) meant = closestWord(option, optionsOf(place));
    if (!meant.empty()) return none + "; did you mean " + inQuotes(meant) + "?";
    if (!ofProgram && program.get_option_no_throw(option) != nullptr) {
        return none + "; it stands before a command, as in 'nearcast " + option + "'";
    }
    if (having.empty()) return none;
    return none + "; " + listed(having) + (having.size() == 1 ? " has" : " have") + " it";
}

/// The option that a word was probably meant for.
std::string optionFor(const CLI::App& place, const std::string& word) {
    if (place.get_option_no_throw("--radio") == nullptr) return "";
    const std::string radio = radioMeantBy(word);
    const bool settings = radio == "replay:" + word && word.ends_with(".json");  // lines have another ending
    if (settings && place.get_option_no_throw("--settings") != nullptr) return "--settings " + word;
    return radio.empty() ? "" : "--radio " + radio;
}

std::string unexpectedWord(const CLI::App& place, const std::string& word) {
    const std::string begin = inQuotes(word) + " is not expected: ";
    const std::string meant = optionFor(place, word);
    if (!meant.empty()) return begin + "did you mean " + inQuotes(meant) + "?";
    const auto positionals = place.get_options([](const CLI::Option* option) { return option->get_positional(); });
    if (positionals.empty()) return begin + place.get_name() + " takes options alone";
    return begin + place.get_name() + " takes one " + positionals.front()->get_name();
}

/// What the parser left over; empty where that is nothing.
std::string leftOver(const CLI::App& program, const CLI::App& place, bool wordsToo) {
    Words rest = place.remaining();
    if (&program != &place) {
        const Words more = program.remaining();  // what stands behind "--"
        rest.insert(rest.end(), more.begin(), more.end());
    }
    const auto option = std::find_if(rest.begin(), rest.end(), isOption);
    if (option != rest.end()) return unknownOption(program, place, withoutValue(*option));
    return wordsToo && !rest.empty() ? unexpectedWord(place, rest.front()) : "";
}

std::string missingArgument(const CLI::App& place) {
    for (const CLI::Option* option : place.get_options()) {
        if (!option->get_required() || option->count() != 0) continue;
        return "a " + option->get_name() + " is needed, as in '" + firstExample(place) + "'";
    }
    return "";
}

std::string contradiction(const CLI::App& place) {
    for (const CLI::Option* option : place.get_options()) {
        if (option->count() == 0) continue;
        Words missing;
        for (const CLI::Option* needed : option->get_needs()) {
            if (needed->count() == 0) missing.push_back(needed->get_name());
        }
        std::sort(missing.begin(), missing.end());
        if (!missing.empty()) return option->get_name() + " needs " + listed(missing);
        for (const CLI::Option* other : option->get_excludes()) {
            if (other->count() != 0) return option->get_name() + " and " + other->get_name() + " exclude each other";
        }
    }
    return "";
}

/// An option without its value, or with too many.
std::string wrongNumber(const CLI::App& place, const CLI::ParseError& error) {
    const std::string what = error.what();
    const std::string name = what.substr(0, what.find_first_of(": "));
    const CLI::Option* option = place.get_option_no_throw(name.starts_with("-") ? name : "--" + name);
    if (option == nullptr) return "";
    if (isFlag(*option)) return option->get_name() + " takes no value";
    if (option->count() > 1) return option->get_name() + " is given " + std::to_string(option->count()) + " times";
    return option->get_name() + " needs a value: " + option->get_type_name();
}

template <class Kind>
bool is(const CLI::ParseError& error) {
    return dynamic_cast<const Kind*>(&error) != nullptr;
}

}  // namespace

bool isFlag(const CLI::Option& option) { return option.get_items_expected_max() == 0; }

std::string mistakeIn(const CLI::App& program, const CLI::App& place, const CLI::ParseError& error) {
    std::string said = leftOver(program, place, is<CLI::ExtrasError>(error));
    if (said.empty() && is<CLI::ArgumentMismatch>(error)) said = wrongNumber(place, error);
    if (said.empty() && (is<CLI::RequiresError>(error) || is<CLI::ExcludesError>(error))) said = contradiction(place);
    if (said.empty() && is<CLI::RequiredError>(error)) {
        said = &program == &place ? missingCommand(program) : missingArgument(place);
    }
    return said.empty() ? error.what() : said;
}

std::string unknownCommand(const CLI::App& program, const std::string& word) {
    const std::string none = "there is no command " + inQuotes(word);
    const auto* const other = std::find_if(std::begin(otherNames), std::end(otherNames),
                                           [&](const OtherName& one) { return one.name == word; });
    const Words commands = commandsOf(program);
    Words known = commands;
    known.insert(known.end(), {"help", "version"});
    std::string meant = other != std::end(otherNames) ? std::string(other->command) : closestWord(word, known);
    if (meant.empty()) {
        const std::string radio = radioMeantBy(word);
        if (!radio.empty()) meant = "nearcast watch --radio " + radio;
    }
    if (!meant.empty()) return none + "; did you mean " + inQuotes(meant) + "?";
    return none + "; there are " + listed(commands);
}

std::string missingCommand(const CLI::App& program) {
    return "a command is needed: " + listed(commandsOf(program), " or ") + "; '" + firstExample(program) +
           "' shows a simulated shop";
}

}  // namespace nearcast::cli
