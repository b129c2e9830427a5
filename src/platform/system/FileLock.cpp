// SPDX-License-Identifier: Apache-2.0
#include "platform/system/FileLock.h"

#include "platform/system/Companion.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <cerrno>
#include <system_error>

namespace nearcast {

FileLock::FileLock(const std::string& path) {
    const std::string name = companionOf(path, "lock");
    constexpr mode_t everybody = 0666;  // less what the process's mask takes away
    descriptor_ = open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, everybody);
    // Whoever may read a lock may hold it.
    if (descriptor_ < 0 && errno == EACCES) descriptor_ = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (descriptor_ < 0) throw std::system_error(errno, std::generic_category(), name + ": cannot be made");
    giveToOwnerOf(path, descriptor_);
    if (flock(descriptor_, LOCK_EX | LOCK_NB) == 0) return;
    const int error = errno;
    close(descriptor_);
    const bool held = error == EWOULDBLOCK;
    throw std::system_error(error, std::generic_category(),
                            held ? path + ": is being changed by another program" : name + ": cannot be locked");
}

FileLock::~FileLock() { close(descriptor_); }

}  // namespace nearcast
