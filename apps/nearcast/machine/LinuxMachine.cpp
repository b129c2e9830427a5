// SPDX-License-Identifier: Apache-2.0
#include "machine/LinuxMachine.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

namespace nearcast::cli {

namespace {

constexpr std::size_t longestFile = std::size_t{64} << 10;

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
struct ProcessCloser {
    void operator()(std::FILE* output) const noexcept { pclose(output); }
};

std::string contentOf(std::FILE* file, std::size_t longest) {
    std::string content(longest, '\0');
    content.resize(std::fread(content.data(), 1, content.size(), file));
    return content;
}

}  // namespace

std::optional<std::string> LinuxMachine::file(const std::string& path) const {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rbe"));
    if (!file) return std::nullopt;
    return contentOf(file.get(), longestFile);
}

std::optional<std::vector<std::string>> LinuxMachine::folder(const std::string& path) const {
    std::error_code problem;
    std::filesystem::directory_iterator entry(path, problem);
    if (problem) return std::nullopt;
    std::vector<std::string> names;
    for (; !problem && entry != std::filesystem::directory_iterator(); entry.increment(problem)) {
        names.push_back(entry->path().filename());
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::optional<std::string> LinuxMachine::versionOf(const std::string& program) const {
    std::error_code problem;
    if (!std::filesystem::is_regular_file(program, problem)) return std::nullopt;
    const std::string command = program + " --version 2>/dev/null";
    const std::unique_ptr<std::FILE, ProcessCloser> output(popen(command.c_str(), "re"));
    if (!output) return std::nullopt;
    std::string version = contentOf(output.get(), 64);
    version.resize(std::min(version.size(), version.find('\n')));
    if (version.empty()) return std::nullopt;
    return version;
}

const HciAdapterList& LinuxMachine::controllers() const {
    if (!controllers_) controllers_ = hci::hciAdapters();
    return *controllers_;
}

const BusReading& LinuxMachine::bus() const {
    if (!bus_) bus_ = readBus();
    return *bus_;
}

}  // namespace nearcast::cli
