// SPDX-License-Identifier: Apache-2.0
// Plays inputs to a fuzzer's target once each, where there is no libFuzzer: files, and all files of folders.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& place) {
    if (!std::filesystem::is_directory(place)) return {place};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(place)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

/// @return whether all held
bool play(const std::filesystem::path& path) {
    try {
        std::ifstream file(path, std::ios::binary);
        if (!file) throw std::runtime_error("cannot be opened");
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        return true;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s: %s\n", path.c_str(), problem.what());
        return false;
    }
}

}  // namespace

int main(int count, char** arguments) {
    try {
        std::size_t played = 0;
        std::size_t failed = 0;
        for (int place = 1; place < count; ++place) {
            for (const auto& file : filesOf(arguments[place])) {
                if (!play(file)) ++failed;
                ++played;
            }
        }
        std::printf("%zu inputs played, %zu failed\n", played, failed);
        return played == 0 || failed != 0 ? 1 : 0;
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "%s\n", problem.what());
        return 1;
    }
}
