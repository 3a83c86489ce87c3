"""Runs the script tests under valgrind: no process of theirs may use memory wrongly or lose any.

    valgrind_scripts.py SOURCE HVM MODULE [--jobs COUNT] [--filter PATTERN]

Valgrind shows programs a processor with AVX2 and without AVX-512, so the loops of AVX2 run.
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys
import tempfile

# Valgrind computes with 64 bits where the processor's old registers have 80. These expectations depend on the 80.
WITHOUT_80_BITS = {
    "tests/scripts/language/table_functions.hvm:57": "hvm compares integers of 64 bits with reals as long doubles",
    "tests/scripts/linalg/xnorm.hvm:18": "the norm of OpenBLAS squares 3e300 and 4e300 in registers of 80 bits",
}

NO_ERRORS = re.compile(r"ERROR SUMMARY: 0 errors ")


def under_valgrind(options, logs, *words):
    """Runs hvm, and returns what it prints. The end of every process writes a log of its own."""
    command = ["valgrind", f"--suppressions={options.source / 'tests/runtime/valgrind.supp'}", "--leak-check=full",
               "--show-leak-kinds=definite", "--errors-for-leak-kinds=definite", f"--log-file={logs}/%p.txt",
               options.hvm, "--module", options.module, *words]
    # One thread of BLAS: valgrind runs one at a time.
    environment = {**os.environ, "OPENBLAS_NUM_THREADS": "1", "OPENBLAS_CORETYPE": "Haswell"}
    run = subprocess.run(command, cwd=options.source, env=environment, capture_output=True, text=True, check=False)
    if run.stderr.strip():
        print(run.stderr.rstrip())
    return run.stdout


def reports(logs):
    """The logs of processes that have errors, and the number of those without."""
    bad, good = [], 0
    for file in sorted(pathlib.Path(logs).iterdir()):
        text = file.read_text(encoding="utf-8", errors="replace")
        lines = [line for line in text.splitlines() if re.match(r"==\d+== \S", line)]
        if NO_ERRORS.search(text):
            good += 1
        # A process that has become another program, such as gnuplot, has the head of a log alone.
        elif len(lines) > 5 or not text:
            bad.append(text)
    return bad, good


def faults_of_control(options):
    """Valgrind sees the one way in which a script can read memory that is not an array's.

    The index is far beyond: behind the elements the array's own block goes on for some bytes."""
    with tempfile.TemporaryDirectory() as logs:
        under_valgrind(options, logs, "--unchecked", "-e", "a = xones(3)\nprint(a[100000])")
        bad, _ = reports(logs)
    return [] if len(bad) == 1 and "Invalid read of size 8" in bad[0] else [
        "valgrind does not notice an index beyond the extents"]


def faults_of_scripts(options):
    words = ["--jobs", str(options.jobs), "--time-limit", "1200", "-v", "--test"]
    if options.filter:
        words += ["--filter", options.filter]
    with tempfile.TemporaryDirectory() as logs:
        printed = under_valgrind(options, logs, *words, "tests/scripts")
        bad, good = reports(logs)
    faults = list(bad)

    summary = re.search(r"^(\d+) passed(?:, (\d+) failed)?", printed, re.MULTILINE)
    if not summary:
        return [*faults, f"hvm did not end as usual:\n{printed}"]
    scripts = int(summary[1]) + int(summary[2] or 0)
    if good + len(bad) < scripts + 1:
        faults.append(f"{scripts} scripts ran, but only {good + len(bad)} processes told what they found")

    failed = set(re.findall(r"^(\S+\.hvm:\d+): ", printed, re.MULTILINE))
    faults += [f"{place} fails under valgrind alone" for place in sorted(failed - set(WITHOUT_80_BITS))]
    if not options.filter:
        faults += [f"{place} passes; its reason no longer holds: {WITHOUT_80_BITS[place]}"
                   for place in sorted(set(WITHOUT_80_BITS) - failed)]
    failed_scripts = set(re.findall(r"^failed in .*: (\S+)$", printed, re.MULTILINE))
    if len(failed_scripts) != int(summary[2] or 0) or failed_scripts != {place.rsplit(":", 1)[0] for place in failed}:
        faults.append(f"a script fails without a place:\n{printed}")
    print(f"{scripts} scripts, {good + len(bad)} processes, {len(bad)} with errors; "
          f"{len(failed)} expectations that take 80 bits fail")
    return faults


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("source", type=pathlib.Path)
    parser.add_argument("hvm")
    parser.add_argument("module")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    parser.add_argument("--filter")
    options = parser.parse_args()
    options.source = options.source.resolve()
    options.hvm, options.module = os.path.abspath(options.hvm), os.path.abspath(options.module)

    faults = faults_of_control(options) + faults_of_scripts(options)
    for fault in faults:
        print(f"error: {fault}", file=sys.stderr)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
