// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace nearcast::cli {

/// What stands below the options in a command's help: two examples at least, the most likely first. A message about
/// what the command lacks shows the first.
/// @param note a paragraph above them, where the options leave something to say
void setExamples(CLI::App& command, std::initializer_list<std::string_view> examples, std::string_view note = "");

/// The first of them; empty where there is none.
std::string firstExample(const CLI::App& command);

/// Completes the help of the program and of each of its commands: what they all have in common, the table of radios for
/// those that listen with one, and the words used. To be called when all commands are there.
void completeHelp(CLI::App& program);

/// Where more can be read, after a message about the command line.
/// @param command empty: the program itself
std::string pointerToHelp(std::string_view command);

}  // namespace nearcast::cli
