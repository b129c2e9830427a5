// SPDX-License-Identifier: Apache-2.0
#include "Command.h"
#include "common/Arguments.h"
#include "common/Interruption.h"
#include "common/Progress.h"
#include "common/Words.h"
#include "common/files/OwnInput.h"
#include "common/radio/Listening.h"
#include "common/radio/RadioOption.h"
#include "common/radio/Readiness.h"
#include "doctor/Checks.h"
#include "doctor/Diagnosis.h"
#include "doctor/Hearing.h"
#include "doctor/ScanFindings.h"
#include "doctor/SettingsFindings.h"
#include "help/HelpText.h"
#include "machine/Facts.h"
#include "machine/LinuxMachine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace nearcast::cli {

namespace {

constexpr double stepSeconds = 0.25;

struct DoctorArguments {
    std::string radio = "auto";
    std::string settings;
    double forSeconds = 10;
    bool json = false;
};

/// Flushed, because somebody may watch the output.
void say(const std::string& text) {
    writeOut(text);
    finishOut();
}

std::string tallyOf(std::uint64_t reports, double seconds) {
    return Tally{reports, std::chrono::round<std::chrono::microseconds>(std::chrono::duration<double>(seconds))}.text();
}

/// Prints each finding as it is made, or all of them at the end as JSON.
class Doctor {
public:
    explicit Doctor(const DoctorArguments& arguments) : arguments_(arguments) {}

    /// @param settings what the settings file has; none where there is no such file
    int run(Listening& listening, std::vector<Finding> settings) {
        const LinuxMachine machine;
        diagnosis_.radio = arguments_.radio == "auto" ? automaticRadio(machine) : arguments_.radio;
        for (CheckedFinding& one : examine(machine, wayOf(diagnosis_.radio))) add(std::move(one));
        for (Finding& one : settings) add({"settings", std::move(one)});
        scan(listening);
        if (arguments_.json) {
            say(diagnosisAsJSON(diagnosis_) + "\n");
        } else {
            say("\n" + verdictInWords(diagnosis_.verdict()) + "\n");
        }
        const Hearing heard = diagnosis_.hearing.value_or(Hearing());
        sayWritten("doctor", "",
                   counted(diagnosis_.findings.size(), "finding") + ", " + tallyOf(heard.reports, heard.seconds));
        return diagnosis_.status();
    }

private:
    void add(CheckedFinding finding) {
        if (!arguments_.json) say(findingInColumns(finding));
        diagnosis_.findings.push_back(std::move(finding));
    }

    void scan(Listening& listening) {
        try {
            diagnosis_.health =
                listening.open(arguments_.radio, [](std::string_view line) { complain("doctor", line, exitGood); });
        } catch (const std::invalid_argument&) {
            throw;  // the command line is wrong, not the machine
        } catch (const std::exception& error) {
            if (!fileOfRadio(arguments_.radio).empty()) throw;  // the file is wrong, not the machine
            return add({"scan", {Level::fault, std::string("the radio cannot be opened: ") + error.what(), ""}});
        }
        if (readinessOf(diagnosis_.health) == Readiness::missing) {
            diagnosis_.failed = true;
            return add({"scan", missingFinding(diagnosis_.health)});
        }
        listen(listening);
        for (Finding& one : scanFindings(*diagnosis_.hearing, diagnosis_.health)) add({"scan", std::move(one)});
        if (wayOf(diagnosis_.radio) == noWay) return;
        if (auto duplicates = duplicatesFinding(*diagnosis_.hearing)) add({"duplicates", std::move(*duplicates)});
    }

    void listen(Listening& listening) {
        if (!arguments_.json) {
            std::array<char, 64> time{};
            std::snprintf(time.data(), time.size(), "%g s ...\n", arguments_.forSeconds);
            say("\nListening by '" + printable(diagnosis_.radio) + "' for " + time.data());
        }
        // Shared with the radio's thread, which may use it until the radio is closed.
        const auto counter = std::make_shared<HearingCounter>();
        listening.begin({[counter](const AdvertisingReport& report, auto at) { counter->heard(report, at); },
                         [](const RadioHealth& /*health*/, auto /*at*/) {}});
        listenWithProgress(listening, *counter);
        diagnosis_.health = listening.health();
        diagnosis_.hearing = counter->result(listening.now());
        diagnosis_.failed = !listening.failure().empty();  // as the console has said
        listening.end();
        if (!arguments_.json) say("\n" + hearingInColumns(*diagnosis_.hearing));
    }

    void listenWithProgress(Listening& listening, const HearingCounter& counter) const {
        Progress progress;
        while (listening.seconds() < arguments_.forSeconds &&
               listening.runFor(std::min(stepSeconds, arguments_.forSeconds - listening.seconds()))) {
            progress.show([&] {
                const Hearing heard = counter.result(listening.now());
                return tallyOf(heard.reports, heard.seconds) + " of " + decimals(arguments_.forSeconds) + " s";
            });
        }
    }

    const DoctorArguments& arguments_;
    Diagnosis diagnosis_;
};

int doctor(const DoctorArguments& arguments) {
    Listening listening;
    const Interruption interruption([&] { listening.interrupt(); });
    refuseOwnInput("", {fileOfRadio(arguments.radio), arguments.settings});
    auto settings = arguments.settings.empty() ? std::vector<Finding>() : settingsFindings(arguments.settings);
    return Doctor(arguments).run(listening, std::move(settings));
}

}  // namespace

void addDoctor(CLI::App& application, Action& chosen) {
    auto* command = application.add_subcommand("doctor", "Find out what stands between you and a working scan");
    auto arguments = std::make_shared<DoctorArguments>();
    addRadioOption(*command, arguments->radio);
    command
        ->add_option("--settings", arguments->settings, "Registered devices to be checked, as the manager saves them")
        ->type_name("FILE");
    command->add_option("--for", arguments->forSeconds, "Listen for so many seconds")
        ->type_name("SECONDS")
        ->capture_default_str()
        ->check(problemWithSeconds);
    command->add_flag("--json", arguments->json, "Print one JSON object");
    setExamples(
        *command,
        {"nearcast doctor", "nearcast doctor --radio hci:0 --for 30", "nearcast doctor --radio 'simulator?speed=max'"},
        "It ends with 0 where the scan works, and with 3 where something is worth mending or there is no "
        "working scan.");
    command->callback([arguments, &chosen] { chosen = [arguments] { return doctor(*arguments); }; });
}

}  // namespace nearcast::cli
