// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace nearcast {

/// Lets one at a time change a file, among processes and among threads of one. The lock is a file of its own beside it,
/// for the file itself is replaced by each change: ".devices.json.lock", which stays. It ends with the object or the
/// process.
class FileLock {
public:
    /// Never waits.
    /// @param path of the file, with its links followed
    /// @throws std::system_error naming the file; `std::errc::operation_would_block` while another holds the lock
    explicit FileLock(const std::string& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    int descriptor_ = -1;
};

}  // namespace nearcast
