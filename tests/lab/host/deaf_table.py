# SPDX-License-Identifier: Apache-2.0
"""The table that says for how long each radio is deaf after each fault."""


class DeafTable:
    """Cells as the guest measured them."""

    def __init__(self):
        self.faults = {}  # row: words
        self.radios = {}  # column: words
        self.cells = {}  # (row, column): seconds, or nothing where there is no end to it

    def take(self, cell):
        """A cell; gives it in words."""
        row, column = cell["row"], cell["column"]
        self.faults[row] = cell["fault"]
        self.radios[column] = cell["radio"]
        self.cells[row, column] = cell["seconds"]
        return f"{cell['fault']}; {cell['radio']}: {self.text(row, column)}"

    @classmethod
    def of(cls, tables):
        """All cells of several machines, in Markdown; empty where there are none."""
        whole = cls()
        for table in tables:
            whole.faults |= table.faults
            whole.radios |= table.radios
            whole.cells |= table.cells
        return whole.markdown()

    def text(self, row, column):
        if (row, column) not in self.cells:
            return ""
        seconds = self.cells[row, column]
        return "for good" if seconds is None else f"{seconds:.1f} s"

    def markdown(self):
        if not self.cells:
            return ""
        columns = sorted(self.radios)
        lines = ["| fault | " + " | ".join(self.radios[column] for column in columns) + " |",
                 "|---" * (1 + len(columns)) + "|"]
        for row in sorted(self.faults):
            cells = [self.text(row, column) for column in columns]
            lines.append("| " + " | ".join([self.faults[row], *cells]) + " |")
        return "\n" + "\n".join(lines) + "\n"
