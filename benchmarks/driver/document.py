"""Puts the results into docs/performance.md, between its markers, and draws the plots beside it."""

import re
import subprocess
from pathlib import Path

HEAD = """# What an event, a producer and a query cost

<!-- begin machine -->
<!-- end machine -->

<!-- begin table -->
<!-- end table -->

<!-- begin details -->
<!-- end details -->
"""


def large_table(results):
    lines = ["| What | Straightforward | Must | Today | Met | Command: `scripts/benchmark --only` |", "|---|---|---|---|---|---|"]
    for result in results:
        for figure in result.figures:
            lines.append(f"| {figure.what} | {figure.straightforward} | {figure.must} | {figure.today} | {figure.verdict} "
                         f"| `{result.row}` |")
    return "\n".join(lines) + "\n"


def details(results, plot_folder):
    parts = []
    for result in results:
        if not result.tables and not result.plots:
            continue
        parts.append(f"### {result.row}\n\n`scripts/benchmark --only {result.row}`, {result.machine}.\n")
        parts += [table.markdown() for table in result.tables]
        parts += [f"![{plot.title}]({plot_folder}/{plot.name}.svg)\n" for plot in result.plots]
    return "\n".join(parts)


def draw(plot, folder):
    folder.mkdir(parents=True, exist_ok=True)
    blocks, curves = [], []
    for number, (name, points) in enumerate(plot.curves.items()):
        blocks.append(f"$curve{number} << END\n" + "\n".join(f"{x} {y}" for x, y in points) + "\nEND")
        curves.append(f"$curve{number} with linespoints linewidth 2 pointtype 7 pointsize 0.6 title '{name}'")
    scale = f"set logscale {plot.logarithmic}\n" if plot.logarithmic else ""
    low = "" if "y" in plot.logarithmic else "set yrange [0:*]\n"
    script = "\n".join(blocks) + f"""
set terminal svg size 720,400 font 'sans-serif,13' background 'white'
set output '{folder / plot.name}.svg'
set title "{plot.title}"
set xlabel "{plot.x}"
set ylabel "{plot.y}"
set key left top
set grid
set encoding utf8
{scale}{low}plot {', '.join(curves)}
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True)


def replace(text, name, content):
    pattern = re.compile(rf"(<!-- begin {name} -->\n).*?(<!-- end {name} -->)", re.DOTALL)
    return pattern.sub(lambda match: match[1] + content + match[2], text)


def write(path, results, machine, is_quick):
    text = path.read_text(encoding="utf-8") if path.exists() else HEAD
    plot_folder = Path(path).parent / Path(path).stem
    if is_quick:
        machine += ". Measured with --quick: too short to be believed"
    text = replace(text, "machine", f"Measured on: {machine}.\n")
    text = replace(text, "table", large_table(results))
    text = replace(text, "details", details(results, plot_folder.name))
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text, encoding="utf-8")
    for result in results:
        for plot in result.plots:
            draw(plot, plot_folder)
