# bench/picture.py: measured ratios as a picture: each row is one benchmark, each dot one array size
#
# Usage: picture.py RESULTS.json PICTURE.svg. The axis is logarithmic. The SVG has backgrounds for light and dark mode.

import json
import math
import sys
from xml.sax.saxutils import escape

COLUMN_WIDTH = 490
LABELS_WIDTH = 160  # the part of a column for the names of the cases
MARGIN = 16
HEAD_HEIGHT = 58
FAMILY_HEIGHT = 40
ROW_HEIGHT = 14
RADII = [2.6, 3.3, 4.0, 4.7]  # from the smallest size of a case to its largest

STYLE = """
  text { font: 11px sans-serif; fill: #24292f; }
  .title { font-size: 14px; font-weight: bold; }
  .family { font-size: 12px; font-weight: bold; }
  .faint { font-size: 9.5px; fill: #57606a; }
  .ground { fill: #ffffff; }
  .grid { stroke: #d0d7de; } .one { stroke: #57606a; stroke-width: 1.5; } .span { stroke: #afb8c1; stroke-width: 1.5; }
  circle { stroke: #24292f; stroke-width: 0.6; }
  .size0 { fill: #fde725; } .size1 { fill: #35b779; } .size2 { fill: #31688e; } .size3 { fill: #440154; }
  @media (prefers-color-scheme: dark) {
    text { fill: #e6edf3; }
    .faint { fill: #9198a1; }
    .ground { fill: #0d1117; }
    .grid { stroke: #30363d; } .one { stroke: #9198a1; } .span { stroke: #6e7681; }
    circle { stroke: #e6edf3; }
  }
"""


def cases_by_family(rows):
    """Family -> case -> [(n, ratio), ...] from the smallest size; rows without a peer are left out."""
    families = {}
    for row in rows:
        if row["ratio"] is None:
            continue
        family, _, case = row["case"].rpartition("/")[0].partition("/")
        families.setdefault(family, {}).setdefault(case, []).append((row["n"], row["ratio"]))
    return {family: {case: sorted(dots) for case, dots in cases.items()} for family, cases in families.items()}


def height_of(cases):
    return FAMILY_HEIGHT + ROW_HEIGHT * len(cases)


def in_columns(families):
    """The names of the families, in their order, in two columns of about the same height."""
    names = list(families)
    heights = [height_of(families[name]) for name in names]
    taller = {split: max(sum(heights[:split]), sum(heights[split:])) for split in range(1, len(names) + 1)}
    split = min(taller, key=taller.get, default=0)
    return [column for column in (names[:split], names[split:]) if column]


class Axis:
    """Whole decades around all ratios and 1."""

    def __init__(self, ratios):
        logarithms = [math.log10(ratio) for ratio in ratios] + [0.0]
        self.low = min(math.floor(min(logarithms)), -1)
        self.high = max(math.ceil(max(logarithms)), 1)

    def x(self, ratio):
        share = (math.log10(ratio) - self.low) / (self.high - self.low)
        return LABELS_WIDTH + share * (COLUMN_WIDTH - LABELS_WIDTH - 2 * MARGIN)

    def decades(self):
        return [10.0 ** power for power in range(self.low, self.high + 1)]


def text(x, y, words, kind="", anchor="start"):
    kind = f' class="{kind}"' if kind else ""
    return f'<text x="{x:.1f}" y="{y:.1f}"{kind} text-anchor="{anchor}">{escape(words)}</text>'


def line(x1, y1, x2, y2, kind):
    return f'<line x1="{x1:.1f}" y1="{y1:.1f}" x2="{x2:.1f}" y2="{y2:.1f}" class="{kind}"/>'


def dot(x, y, size, words):
    title = f"<title>{escape(words)}</title>"
    return f'<circle cx="{x:.1f}" cy="{y:.1f}" r="{RADII[size]}" class="size{size}">{title}</circle>'


def case_row(axis, y, case, dots):
    """The name, a line from the smallest ratio to the largest, and the dots; small sizes are drawn over large ones."""
    places = [axis.x(ratio) for _, ratio in dots]
    yield text(LABELS_WIDTH - 8, y + 3.5, case, anchor="end")
    yield line(min(places), y, max(places), y, "span")
    shown = [dot(x, y, min(size, len(RADII) - 1), f"{case}, n = {n:,}: {ratio:.2f}")
             for size, (x, (n, ratio)) in enumerate(zip(places, dots))]
    yield from reversed(shown)


def family_block(axis, y, family, cases):
    """The heading with the decades below it, and a row for each case."""
    sizes = sorted({n for dots in cases.values() for n, _ in dots})
    top, bottom = y + FAMILY_HEIGHT - 10, y + height_of(cases) - 4
    yield text(0, y + 16, family.replace("_", " "), "family")
    yield text(LABELS_WIDTH, y + 16, "n = " + ", ".join(f"{n:,}" for n in sizes), "faint")
    for decade in axis.decades():
        yield text(axis.x(decade), top - 3, f"{decade:g}", "faint", "middle")
        yield line(axis.x(decade), top, axis.x(decade), bottom, "one" if decade == 1 else "grid")
    for place, (case, dots) in enumerate(cases.items()):
        yield from case_row(axis, top + ROW_HEIGHT * (place + 0.5) + 2, case, dots)


def legend(y):
    yield text(0, y, "Time of a call as a multiple of NumPy's: left of 1 is faster. One thread.", "faint")
    for size, words in enumerate(("smallest n of the case", "", "", "largest")):
        yield dot(372 + 14 * size + (118 if size else 0), y - 3.5, size, words or "between")
        yield text(380 + 14 * size + (118 if size else 0), y, words, "faint")


def picture(facts, rows):
    """The whole SVG as text."""
    families = cases_by_family(rows)
    axis = Axis([ratio for cases in families.values() for dots in cases.values() for _, ratio in dots])
    columns = in_columns(families)
    heights = [sum(height_of(families[name]) for name in column) for column in columns]
    width = max(len(columns), 2) * COLUMN_WIDTH + MARGIN
    height = HEAD_HEIGHT + max(heights, default=0) + MARGIN
    extent = f'viewBox="0 0 {width} {height}" width="{width}" height="{height}"'
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" {extent}>',
             f"<style>{STYLE}</style>", f'<rect class="ground" width="{width}" height="{height}"/>',
             f'<g transform="translate({MARGIN} 0)">',
             text(0, 26, f"arrayfold and NumPy {facts['numpy']}, {facts['processor']}", "title"), *legend(46), "</g>"]
    for number, column in enumerate(columns):
        parts.append(f'<g transform="translate({MARGIN + number * COLUMN_WIDTH} {HEAD_HEIGHT})">')
        y = 0
        for name in column:
            parts += family_block(axis, y, name, families[name])
            y += height_of(families[name])
        parts.append("</g>")
    return "\n".join(parts) + "\n</svg>\n"


def main(results, path):
    with open(results) as measured:
        found = json.load(measured)
    with open(path, "w") as out:
        out.write(picture(found["machine"], found["rows"]))


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
