// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace CLI {
class App;
class Option;
class ParseError;
}  // namespace CLI

namespace nearcast::cli {

/// Whether an option takes no value.
bool isFlag(const CLI::Option& option);

/// What is wrong with a command line that could not be parsed, in a sentence that says what to do instead.
/// @param place  the program, or that command of it which the sentence is about
/// @param error  what the parser threw
std::string mistakeIn(const CLI::App& program, const CLI::App& place, const CLI::ParseError& error);

/// That of a first word which is no command.
std::string unknownCommand(const CLI::App& program, const std::string& word);

/// That of a command line without a command.
std::string missingCommand(const CLI::App& program);

}  // namespace nearcast::cli
