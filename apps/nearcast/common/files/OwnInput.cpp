// SPDX-License-Identifier: Apache-2.0
#include "common/files/OwnInput.h"

#include "common/Output.h"
#include "common/UsageError.h"
#include "platform/files/ByteSource.h"
#include "platform/radio/RadioString.h"

#include <sys/stat.h>
#include <unistd.h>
#include <algorithm>

namespace nearcast::cli {

namespace {

/// A regular file; a terminal or a pipe may be read and written at once.
bool isFile(int result, const struct stat& status) { return result == 0 && S_ISREG(status.st_mode); }

}  // namespace

void refuseOwnInput(const std::string& output, const std::vector<std::string>& inputs) {
    const bool standard = isStandardOutput(output);
    struct stat written {};
    if (!isFile(standard ? fstat(STDOUT_FILENO, &written) : stat(output.c_str(), &written), written)) return;
    for (const std::string& input : inputs) {
        struct stat read {};
        if (!isFile(input == "-" ? fstat(STDIN_FILENO, &read) : stat(input.c_str(), &read), read)) continue;
        if (read.st_dev != written.st_dev || read.st_ino != written.st_ino) continue;
        throw UsageError(nameOfInput(input) + ": would be written over while it is read, as " +
                         (standard ? "standard output" : output));
    }
}

void refuseStandardInputTwice(const std::vector<std::string>& inputs) {
    if (std::count(inputs.begin(), inputs.end(), "-") > 1) throw UsageError("standard input can be read once only");
}

std::string fileOfRecording(const std::string& argument) { return fileOfRadio("replay:" + argument); }

std::string fileOfRadio(const std::string& radio) {
    const RadioString parsed = RadioString::parse(radio);
    const bool named = parsed.kind == "replay" || parsed.kind == "simulator";
    return named ? parsed.argument : std::string();
}

}  // namespace nearcast::cli
