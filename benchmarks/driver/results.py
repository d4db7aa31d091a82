"""What a measurement gives: figures with a limit for the large table, tables and plots for their own sections."""

from dataclasses import asdict, dataclass, field
from typing import Optional


@dataclass
class Figure:
    what: str
    must: str
    today: str
    is_met: Optional[bool] = None
    straightforward: str = ""

    @property
    def verdict(self):
        return {True: "yes", False: "**no**", None: ""}[self.is_met]


@dataclass
class Table:
    title: str
    columns: list
    rows: list

    def markdown(self):
        lines = [f"{self.title}:", "", "| " + " | ".join(self.columns) + " |", "|" + "---|" * len(self.columns)]
        lines += ["| " + " | ".join(str(value) for value in row) + " |" for row in self.rows]
        return "\n".join(lines) + "\n"

    def text(self):
        cells = [self.columns] + [[str(value) for value in row] for row in self.rows]
        widths = [max(len(row[column]) for row in cells) for column in range(len(self.columns))]
        lines = [self.title] + ["  " + "  ".join(value.ljust(width) for value, width in zip(row, widths)).rstrip()
                                for row in cells]
        return "\n".join(lines)


@dataclass
class Plot:
    """Curves over one quantity; a point is (x, y)."""
    name: str
    title: str
    x: str
    y: str
    curves: dict
    logarithmic: str = ""


@dataclass
class Result:
    row: str
    machine: str
    figures: list = field(default_factory=list)
    tables: list = field(default_factory=list)
    plots: list = field(default_factory=list)

    def to_json(self):
        return asdict(self)

    @staticmethod
    def from_json(value):
        return Result(value["row"], value["machine"], [Figure(**figure) for figure in value["figures"]],
                      [Table(**table) for table in value["tables"]], [Plot(**plot) for plot in value["plots"]])
