// SPDX-License-Identifier: Apache-2.0
#include "Command.h"

#include <nearcast/Version.h>

#include "common/Arguments.h"
#include "common/radio/RadioOption.h"
#include "help/HelpText.h"
#include "help/Mistakes.h"
#include "platform/system/TemporaryName.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace nearcast::cli {

namespace {

using Words = std::vector<std::string>;

/// `help` and `version` are other words for options.
Words asOptions(const Words& words) {
    if (words.empty()) return words;
    if (words[0] == "version") {
        if (words.size() > 1) throw UsageError("'" + words[1] + "' is not expected: version takes nothing");
        return {"--version"};
    }
    if (words[0] != "help") return words;
    if (words.size() > 2) throw UsageError("'" + words[2] + "' is not expected: help takes one command");
    if (words.size() == 1 || words[1] == "help" || words[1] == "version") return {"--help"};
    return words[1].starts_with("-") ? Words{words[1]} : Words{words[1], "--help"};
}

/// Splits "--option=" and "-o=VALUE" in two. Of the first the parser would take the next word for the value instead of
/// the empty one; of the second it would take "=VALUE".
Words withSplitValues(const Words& words) {
    Words result;
    bool options = true;
    for (const std::string& word : words) {
        options = options && word != "--";  // what follows is no option
        const auto equals = word.find('=');
        const bool empty = options && word.starts_with("--") && equals > 2 && equals == word.size() - 1;
        const bool letter = options && word.size() > 2 && word[0] == '-' && word[1] != '-' && equals == 2;
        result.push_back(empty || letter ? word.substr(0, equals) : word);
        if (empty || letter) result.push_back(word.substr(equals + 1));
    }
    return result;
}

/// Lets no option and no argument be given empty: it names nothing, and what stands for "not given" inside would be
/// taken for it. Lets no flag be given a value.
void checkValues(CLI::App& program) {
    for (CLI::App* command : program.get_subcommands({})) {
        for (CLI::Option* option : command->get_options()) {
            if (isFlag(*option)) {
                option->disable_flag_override();
            } else {
                option->check(problemWithEmpty);
            }
        }
    }
}

void addCommands(CLI::App& program, Action& chosen) {
    addWatch(program, chosen);
    addRecord(program, chosen);
    addRun(program, chosen);
    addImport(program, chosen);
    addScene(program, chosen);
    addEvaluate(program, chosen);
    addReport(program, chosen);
    addRadios(program, chosen);
    addDoctor(program, chosen);
    checkValues(program);
    completeHelp(program);
}

/// The words of a command line, and what becomes of them.
class CommandLine {
public:
    /// @param command becomes the name of the command, as soon as it is known
    explicit CommandLine(std::string& command) : command_(command) {
        program_.set_version_flag("-V,--version", "nearcast " + std::string(version()), "Print the version and exit");
        program_.require_subcommand(1);
        addCommands(program_, chosen_);
    }

    int run(const Words& given) {
        Words words = withSplitValues(asOptions(given));
        if (words.empty()) throw UsageError(missingCommand(program_));
        begunWithCommand_ = isCommand(words[0]);
        if (!begunWithCommand_ && !words[0].starts_with("-")) throw UsageError(unknownCommand(program_, words[0]));
        std::reverse(words.begin(), words.end());  // as the parser takes them
        try {
            program_.parse(words);
        } catch (const CLI::Success& asked) {
            return tell(asked);
        } catch (const CLI::ParseError& error) {
            throw UsageError(mistakeIn(program_, placeOf(), error));
        }
        const CLI::App& command = placeOf();
        const CLI::Option* radio = command.get_option_no_throw("--radio");
        if (radio != nullptr && radio->count() != 0) requireRadio(radio->results().front());
        return chosen_();
    }

private:
    [[nodiscard]] bool isCommand(const std::string& word) const {
        return !program_.get_subcommands([&](const CLI::App* command) { return command->get_name() == word; }).empty();
    }

    /// Prints help, or the version.
    int tell(const CLI::Success& asked) {
        std::ostringstream text;
        std::ostringstream none;
        program_.exit(asked, text, none);
        writeOut(text.str());
        finishOut();
        return exitGood;
    }

    /// What the words are about: the command that they begin with, or else the program.
    const CLI::App& placeOf() {
        const auto commands = program_.get_subcommands();
        if (commands.empty() || !begunWithCommand_) return program_;
        command_ = commands.front()->get_name();
        return *commands.front();
    }

    CLI::App program_{"Tells which printer or cash drawer the user stands next to, by Bluetooth Low Energy.",
                      "nearcast"};
    Action chosen_;
    std::string& command_;
    bool begunWithCommand_ = false;
};

int complainOfUse(const std::string& command, const UsageError& error) {
    complain(command, error.what(), exitUsage);
    std::fprintf(stderr, "%s\n", pointerToHelp(command).c_str());
    return exitUsage;
}

/// What a command throws becomes its exit status here, so that the same mistake ends every command alike.
int statusOf(const std::string& command, const std::exception_ptr& thrown) {
    try {
        std::rethrow_exception(thrown);
    } catch (const UsageError& error) {
        return complainOfUse(command, error);
    } catch (const std::invalid_argument& error) {
        return complain(command, error.what(), exitUsage);
    } catch (const std::bad_alloc&) {
        return complain(command, "there is not enough memory", exitFailed);
    } catch (const std::exception& error) {
        return complain(command, error.what(), exitFailed);
    }
}

}  // namespace

int runCommandLine(int argc, char** argv) {
    std::string command;
    try {
        TemporaryName::removeOnSignals();
        const Words words(argv + std::min(argc, 1), argv + argc);
        return CommandLine(command).run(words);
    } catch (const std::exception&) {
        return statusOf(command, std::current_exception());
    }
}

}  // namespace nearcast::cli
