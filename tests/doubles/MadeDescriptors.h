// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>

namespace nearcast {

/// The file descriptors that are made after it.
class MadeDescriptors {
public:
    /// Closes them, as an application does that closes all that it does not know.
    void closeAll() const {
        for (const int descriptor : open()) {
            if (before_.count(descriptor) == 0) close(descriptor);
        }
    }

private:
    static std::set<int> open() {
        std::set<int> descriptors;
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            descriptors.insert(std::stoi(entry.path().filename()));
        }
        // The folder's own is gone by now, and the next that is made gets its number.
        std::erase_if(descriptors, [](int descriptor) { return fcntl(descriptor, F_GETFD) == -1; });
        return descriptors;
    }

    const std::set<int> before_ = open();
};

}  // namespace nearcast
