# SPDX-License-Identifier: Apache-2.0
"""The root file system of the real service: the machine's own, or that of another release with its libraries."""

import pathlib
import subprocess

SHARED = ("/proc", "/sys", "/dev", "/run", "/var/lib", "/etc/bluetooth")


class ServiceRoot:
    def __init__(self, config):
        self.path = config["debian"]
        self.own = config["system"] != "today"  # its programs need its libraries

    def find(self, *places):
        """The first of these files that the packages brought."""
        return next(path for path in (pathlib.Path(self.path + str(place)) for place in places) if path.exists())

    def enter(self):
        """Once for a machine: what both share."""
        if not self.own:
            return
        for place in SHARED:
            pathlib.Path(place).mkdir(parents=True, exist_ok=True)
            pathlib.Path(self.path + place).mkdir(parents=True, exist_ok=True)
            subprocess.run(["mount", "--rbind", place, self.path + place], check=True)

    def command(self, program, *arguments):
        """What starts a program of it; the process is the program's own."""
        if not self.own:
            return [self.path + program, *arguments]
        return ["chroot", self.path, program, *arguments]
