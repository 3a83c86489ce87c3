# tests/examples/weather_results.py: what examples/weather.hvm writes, computed once more
#
# Usage: weather_results.py HVM MODULE PROJECT_DIRECTORY

import csv
import json
import pathlib
import statistics
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

MONTHS = "Jan Feb Mar Apr May Jun Jul Aug Sep Oct Nov Dec".split()
YEARS = 4
HALF_DIGIT = 0.00500001  # the files have two digits behind the point


def expected_months(data):
    """The rows of the table, from the measurements."""
    with data.open(newline="") as file:
        days = list(csv.DictReader(file))
    for number, name in enumerate(MONTHS, 1):
        own = [day for day in days if int(day["date"].split("-")[1]) == number]
        column = {key: [float(day[key]) for day in own] for key in ("temp_max", "temp_min", "wind", "precipitation")}
        yield {
            "month": name,
            "days": len(own),
            "high": statistics.fmean(column["temp_max"]),
            "low": statistics.fmean(column["temp_min"]),
            "wind": statistics.fmean(column["wind"]),
            "rain": sum(column["precipitation"]) / YEARS,
            "wet": sum(amount > 0 for amount in column["precipitation"]) / YEARS,
        }


def faults_of_months(name, rows, expected):
    if len(rows) != len(expected):
        yield f"{name}: {len(rows)} rows, not {len(expected)}"
    for row, right in zip(rows, expected):
        if list(row) != list(right):
            yield f"{name}: the names are {list(row)}, not {list(right)}"
        for key, value in right.items():
            is_right = row[key] == value if key == "month" else abs(float(row[key]) - value) <= HALF_DIGIT
            if not is_right:
                yield f"{name}: {key} of {right['month']} is {row[key]}, not {value}"


def faults(hvm, module, project):
    files_before = sorted(project.glob("examples/**/*"))
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        script = [hvm, "--module", module, "examples/weather.hvm", folder]
        run = subprocess.run(script, cwd=project, capture_output=True, text=True)
        if run.returncode != 0:
            yield f"weather.hvm ends with status {run.returncode}: {run.stderr}"
            return
        written = sorted(path.name for path in folder.iterdir())
        if written != ["months.csv", "temperature.svg", "weather.json"]:
            yield f"weather.hvm has written {written}"
        with (folder / "months.csv").open(newline="") as file:
            table = list(csv.DictReader(file))
        results = json.loads((folder / "weather.json").read_text())
        picture = xml.etree.ElementTree.parse(folder / "temperature.svg").getroot()
    drawn = " ".join(text.strip() for text in picture.itertext())
    for label in ("Seattle", "year", "degrees", "days", "model"):
        if label not in drawn:
            yield f"temperature.svg does not show {label}"
    expected = list(expected_months(project / "examples/data/seattle-weather.csv"))
    yield from faults_of_months("months.csv", table, expected)
    yield from faults_of_months("weather.json", results["months"], expected)
    if json.dumps(results["model"]) not in " ".join(run.stdout.split()).replace("{ ", "{").replace(" }", "}"):
        yield "the model in weather.json is not the one that weather.hvm prints"
    if sorted(project.glob("examples/**/*")) != files_before:
        yield "weather.hvm has changed the folder of the examples"


found = list(faults(sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])))
print("\n".join(found) or "the results are right")
sys.exit(1 if found else 0)
