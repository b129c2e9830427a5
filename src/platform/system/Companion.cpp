// SPDX-License-Identifier: Apache-2.0
#include "platform/system/Companion.h"

#include <sys/stat.h>
#include <unistd.h>

namespace nearcast {

std::string companionOf(const std::string& path, std::string_view ending) {
    const auto slash = path.rfind('/');
    const std::size_t name = slash == std::string::npos ? 0 : slash + 1;
    return path.substr(0, name).append(".").append(path, name).append(".").append(ending);
}

void giveToOwnerOf(const std::string& path, int descriptor) noexcept {
    struct stat owner {};
    struct stat now {};
    if (stat(path.c_str(), &owner) != 0 || fstat(descriptor, &now) != 0) return;
    if (owner.st_uid == now.st_uid && owner.st_gid == now.st_gid) return;
    if (fchown(descriptor, owner.st_uid, owner.st_gid) != 0) return;  // then it stays ours
}

}  // namespace nearcast
