# SPDX-License-Identifier: Apache-2.0
import unittest

from deaf_table import DeafTable


def cell(row, column, seconds):
    return {"row": row, "fault": f"fault {row}", "column": column, "radio": f"radio {column}", "seconds": seconds}


class Table(unittest.TestCase):
    def test_cells_of_several_machines_stand_in_the_order_of_rows_and_columns(self):
        first, second = DeafTable(), DeafTable()
        first.take(cell(1, 1, 0.14))
        second.take(cell(0, 1, None))
        second.take(cell(0, 0, 8.06))
        self.assertEqual(DeafTable.of([first, second]),
                         "\n| fault | radio 0 | radio 1 |\n|---|---|---|\n| fault 0 | 8.1 s | for good |\n"
                         "| fault 1 |  | 0.1 s |\n")

    def test_a_cell_is_told_in_words(self):
        self.assertEqual(DeafTable().take(cell(2, 0, 0.2)), "fault 2; radio 0: 0.2 s")

    def test_without_a_cell_there_is_no_table(self):
        self.assertEqual(DeafTable.of([DeafTable()]), "")


if __name__ == "__main__":
    unittest.main()
