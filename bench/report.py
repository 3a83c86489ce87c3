# bench/report.py: measured rows as a table, and facts about the machine
#
# Usage: report.py RESULTS.json writes the page and the picture beside saved rows anew.

import json
import os
import platform
import re
import subprocess
import sys

import numpy

import picture
from comparison import geometric_mean
from reasons import reason_for

NOISE = 0.1  # a bound counts as exceeded beyond this share of it


def is_beyond(row):
    """True when a row exceeds a bound by more than noise."""
    ratio, limit = row["ratio_bound"], row["ns_limit"]
    over_ratio = ratio is not None and row["ratio"] > ratio * (1 + NOISE)
    over_limit = limit is not None and row["ours_ns"] > limit * (1 + NOISE)
    return over_ratio or over_limit


def number(x, form="{:,.0f}"):
    if x is None:
        return ""
    return ("{:.2f}" if abs(x) < 10 else form).format(x)


def cells(row):
    bounds = []
    if row["ratio_bound"] is not None:
        bounds.append(f"{row['ratio_bound']:g}")
    if row["ns_limit"] is not None:
        bounds.append(f"{row['ns_limit']:,.0f} ns")
    return [
        row["case"].rpartition("/")[0],
        f"{row['n']:,}",
        number(row["ours_ns"]),
        number(row["numpy_ns"]),
        number(row["ratio"], "{:.1f}"),
        ", ".join(bounds),
        "beyond" if is_beyond(row) else "",
    ]


HEADINGS = ["case", "n", "ours (ns)", "numpy (ns)", "ratio", "target", "mark"]
WIDTHS = [24, 10, 12, 12, 6, 18, 6]


def line(texts):
    """A line of the table, aligned for terminals and valid Markdown."""
    return "| " + " | ".join(f"{text:<{width}}" if column == 0 else f"{text:>{width}}"
                             for column, (text, width) in enumerate(zip(texts, WIDTHS))) + " |"


def head():
    rule = [("-" * width) if column == 0 else ("-" * (width - 1) + ":") for column, width in enumerate(WIDTHS)]
    return line(HEADINGS) + "\n" + line(rule)


def notes(rows):
    """A sentence for each expression that was measured beside a peer."""
    return [f"{row['case']}: `{row['beside']}` takes {number(row['beside_ns'])} ns." for row in rows if "beside" in row]


def counted(rows):
    """The rows that a mean counts: with a peer, and with a result that both sides have written."""
    return [row for row in rows if row["ratio"] and not row["is_untouched"]]


def summary(rows):
    """Sentences on all rows: how much faster than NumPy the module is, and where it is slower."""
    rows = counted(rows)
    if not rows:
        return []
    families = sorted({row["case"].partition("/")[0] for row in rows})
    parts = [(family, [row for row in rows if row["case"].startswith(family + "/")]) for family in families]
    shares = [f"{name} {1 / geometric_mean(row['ratio'] for row in part):.2f}" for name, part in parts]
    slower = slower_rows(rows)
    return [
        f"NumPy's time over the module's, geometric mean of {len(rows)} rows: "
        f"{1 / geometric_mean(row['ratio'] for row in rows):.2f}. By family: {', '.join(shares)}.",
        f"Rows in which NumPy takes less than 0.95 of the module's time: {len(slower)}.",
    ]


def slower_rows(rows):
    """The counted rows in which NumPy is clearly faster."""
    return [row for row in counted(rows) if row["ratio"] > 1 / 0.95]


def explanations(rows):
    """A table of the rows in which NumPy is faster: why, and how long the bare work takes."""
    slower = slower_rows(rows)
    if not slower:
        return []
    times = {row["case"]: row["ours_ns"] for row in rows}
    lines = ["| case | n | ratio | bare row | ours over it | why |", "| --- | ---: | ---: | --- | ---: | --- |"]
    for row in slower:
        reason = reason_for(row["case"])
        bare = reason and times.get(f"limits/{reason.bare}/{row['n']}")
        lines.append("| " + " | ".join([
            row["case"].rpartition("/")[0], f"{row['n']:,}", number(row["ratio"], "{:.1f}"),
            reason.bare if bare else "", number(row["ours_ns"] / bare) if bare else "",
            reason.why if reason else "unknown",
        ]) + " |")
    return lines


def machine(compiler, kept_memory=None):
    """What the figures depend on: name -> value."""
    freed = "as much stays as the C library keeps" if kept_memory is None else f"{kept_memory} MiB stay"
    model = "unknown processor"
    with open("/proc/cpuinfo") as info:
        found = re.search(r"^model name\s*:\s*(.*)$", info.read(), re.MULTILINE)
        model = found.group(1) if found else model
    family = _first_line("lscpu", "CPU family") + " " + _first_line("lscpu", "Model")
    return {
        "processor": model,
        "family and model": family.strip(),
        "cores": str(os.cpu_count()),
        "caches": ", ".join(f"{level} {_first_line('lscpu', level + ' cache')}" for level in ("L1d", "L2", "L3")),
        "freed memory": freed,
        "huge pages": _read("/sys/kernel/mm/transparent_hugepage/enabled"),
        "system": f"{platform.system()} {platform.release().partition('-')[0]}, {_distribution()}, {' '.join(platform.libc_ver())}",
        "compiler": compiler,
        "python": platform.python_version(),
        "numpy": numpy.__version__,
    }


def machine_name(facts):
    """The name of the machine's results: its processor and the number of its cores."""
    words = re.sub(r"\(.*?\)|CPU|Processor|@.*", "", facts["processor"])
    model = re.sub(r"[^0-9a-z]+", "-", f"{words} {facts['family and model']}".lower()).strip("-")
    return f"{model}-{facts['cores']}-cores"


def save(directory, facts, rows, kept_memory=None):
    """Writes <machine>.md, .svg, and .json with every round. Returns the path of the first."""
    os.makedirs(directory, exist_ok=True)
    path = os.path.join(directory, machine_name(facts) + ("-keeping-memory" if kept_memory is not None else ""))
    with open(path + ".json", "w") as out:
        json.dump({"machine": facts, "rows": rows}, out, indent=1)
        out.write("\n")
    return show(path, facts, rows)


def show(path, facts, rows):
    """Writes the page and the picture of rows: `path` with the endings .md and .svg. Returns the path of the page."""
    with open(path + ".svg", "w") as out:
        out.write(picture.picture(facts, rows))
    with open(path + ".md", "w") as out:
        out.write("# Ours and NumPy's, one thread\n\n")
        out.writelines(f"- {what}: {value}\n" for what, value in facts.items())
        out.write("\n" + head() + "\n" + "".join(line(cells(row)) + "\n" for row in rows))
        out.writelines(f"\n{text}\n" for text in [*summary(rows), *notes(rows)])
        explained = explanations(rows)
        if explained:
            out.write("\n## Where NumPy is faster\n\n" + "\n".join(explained) + "\n")
    return path + ".md"


def _read(path):
    try:
        with open(path) as text:
            return text.read().strip()
    except OSError:
        return "unknown"


def _distribution():
    found = re.search(r'^PRETTY_NAME="?(.*?)"?$', _read("/etc/os-release"), re.MULTILINE)
    return found.group(1) if found else "unknown distribution"


def _first_line(program, heading):
    """What `program` prints after `heading`, or an empty string."""
    try:
        text = subprocess.run([program], stdout=subprocess.PIPE, text=True, check=False).stdout
    except OSError:
        return ""
    found = re.search(rf"^{heading}:\s*(.*)$", text, re.MULTILINE)
    return found.group(1) if found else ""


def main(path):
    with open(path) as saved:
        results = json.load(saved)
    show(os.path.splitext(path)[0], results["machine"], results["rows"])


if __name__ == "__main__":
    main(*sys.argv[1:])
