// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace nearcast {

/// What of the controllers a process may use. The kernel asks for these in the machine's own user namespace: a process
/// in a container may have them and still be refused.
struct Capabilities {
    bool netAdmin = false;  ///< CAP_NET_ADMIN: to take a controller for oneself
    bool netRaw = false;    ///< CAP_NET_RAW: to hear events beside another program
};

/// Those that are in effect for the calling thread; none where the file cannot be read. From any thread.
/// @param status a file as proc(5) describes /proc/PID/status
Capabilities ownCapabilities(const std::string& status = "/proc/thread-self/status");

/// The path of the running program, for advice on how to give it capabilities; "PROGRAM" where it is not known.
std::string ownProgram();

}  // namespace nearcast
