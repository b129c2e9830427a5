// SPDX-License-Identifier: Apache-2.0
#include "platform/system/WholeFile.h"

#include <cerrno>
#include <cstdio>
#include <memory>
#include <system_error>

namespace nearcast {

std::optional<std::string> readWholeFile(const std::string& path, std::size_t largest) {
    const auto fail = [&](int error, const char* what) {
        throw std::system_error(error, std::generic_category(), path + ": " + what);
    };
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (file == nullptr) {
        if (errno == ENOENT) return std::nullopt;
        fail(errno, "cannot be opened");
    }
    std::string content;
    std::string chunk(std::size_t{1} << 16, '\0');
    while (const std::size_t got = std::fread(chunk.data(), 1, chunk.size(), file.get())) {
        content.append(chunk, 0, got);
        if (content.size() > largest) fail(EFBIG, "cannot be read");
    }
    if (std::ferror(file.get()) != 0) fail(errno, "cannot be read");
    return content;
}

}  // namespace nearcast
