# SPDX-License-Identifier: Apache-2.0
"""Commands that run for a time end when it is over, whatever time it is."""

import random

from nearcast_program import ProgramTest, main, nearcast

SHOP = "simulator?speed=max"
COMMANDS = (("watch", "--json"), ("record",), ("doctor", "--json"))


class Durations(ProgramTest):
    def assert_ends(self, *seconds):
        for duration in seconds:
            for command, *options in COMMANDS:
                with self.subTest(command=command, duration=duration):
                    result = nearcast(command, "--radio", SHOP, "--for", duration, *options, timeout=15)
                    self.assertIn(result.returncode, (0, 3), result.stderr)

    def test_a_time_with_parts_of_a_microsecond(self):
        self.assert_ends("0.33333333", "0.0000014", "1.0000004999")

    def test_the_shortest_times(self):
        self.assert_ends("0", "1e-300", "5e-324", "0.000001")

    def test_times_by_chance(self):
        chance = random.Random(1)
        self.assert_ends(*(repr(10 ** chance.uniform(-8, 0.5)) for _ in range(25)))


if __name__ == "__main__":
    main()
