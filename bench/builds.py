#!/usr/bin/python3
# bench/builds.py: the module of one build and that of another, case by case, as a table of what differs

import argparse
import contextlib
import itertools
import json
import os
import statistics
import subprocess
import sys
import time

os.environ["OPENBLAS_NUM_THREADS"] = "1"
os.environ["OMP_NUM_THREADS"] = "1"
sys.dont_write_bytecode = True  # no cache files beside the sources

import comparison

HELP = """\
Compares the speed of two builds of the module, case by case.

One benchmark program measures both modules, so operands, host and timed loop are the same. It keeps a process for each
module and one more for the old module, whose times show the noise. The three take turns on one core, in an order that
changes from round to round and case to case. Each round and each group of cases (a family at one size) has fresh
processes, since memory addresses, which differ by process, change times as well.

A row's figure is the median over the rounds of new time over old time. Its noise is the largest deviation between the
two processes of the old module (with more than five rounds: the one two ranks above the middle), and at least the lower
quartile of that over all rows. A row is too slow when it is slower than its noise and the limit together:
ratio / (1 + noise) > 1 + limit. Rows that are too slow are measured again, with twice as many rounds; the second
measurement replaces the first."""

EPILOG = """\
Exit status: 0 when no row is too slow; 1 when a row is, or when a case fails in the new module only; 2 when the
comparison itself fails."""

# The host's own functions and the bare work behind some cases, in which the module has no part. They are compared only
# if the filter names them.
SAME_FAMILIES = ("host", "limits")


class CaseFailed(Exception):
    """The program answered a request with an error."""


class Worker:
    """A process that measures one module on demand."""

    def __init__(self, program, module):
        self.module = module
        self.process = subprocess.Popen([program, "--worker", module], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, bufsize=1)

    def times(self, case, calls, samples):
        """Nanoseconds per call of each sample. Raises CaseFailed when the case reports an error."""
        try:
            self.process.stdin.write(f"{case} {calls} {samples}\n")
            answer = self.process.stdout.readline()
        except BrokenPipeError:
            answer = ""
        word, _, rest = answer.strip().partition(" ")
        if word == "error":
            raise CaseFailed(rest)
        if word != "ok":
            raise RuntimeError(f"the process for {self.module} ended while it ran {case}")
        return [float(text) for text in rest.split()]

    def close(self):
        """Ends the process. Its operands may be large, so this waits until their memory is free."""
        with contextlib.suppress(BrokenPipeError):  # a process that ended early left its last request unread
            self.process.stdin.close()
        self.process.stdout.close()
        self.process.wait()


class Plan:
    """How a case is run in every process: samples of that many calls, so that a visit takes about as long as asked."""

    def __init__(self, worker, case, seconds):
        sample_ns = 0.2e9 * seconds
        self.calls = 1
        worker.times(case, 1, 1)  # the first call of a process is slower
        while (spent := worker.times(case, self.calls, 1)[0] * self.calls) < 0.5 * sample_ns:
            self.calls = max(2 * self.calls, min(100 * self.calls, int(self.calls * sample_ns / max(spent, 1))))
        self.samples = max(1, min(5, int(1e9 * seconds / spent)))


def group_of(case):
    """Family and size."""
    parts = case.split("/")
    return parts[0], int(parts[-1])


class Comparison:
    """Rounds of measurements with the old module, the new one, and the old one again."""

    def __init__(self, program, old, new, seconds):
        self.program = program
        self.modules = (old, new, old)
        self.seconds = seconds
        self.plans = {}
        self.failures = {}  # case -> message, with `old module` or `new module` before it

    def rows(self, cases, rounds):
        """A row for each case that fails in neither module."""
        times = {case: [] for case in cases}
        groups = [(group, list(alike)) for group, alike in itertools.groupby(sorted(cases, key=group_of), key=group_of)]
        for number in range(rounds):
            note(f"round {number + 1} of {rounds}, {len(cases)} cases")
            for place, (group, alike) in enumerate(groups):
                progress(f"round {number + 1} of {rounds}: {group[0]}, n = {group[1]:,} ({place + 1} of {len(groups)})")
                self._measure_group(alike, number, times)
        progress("")
        return [comparison.Row(case, tuple(found)) for case, found in times.items() if case not in self.failures]

    def _measure_group(self, cases, number, times):
        workers = []
        try:
            for module in self.modules:
                workers.append(Worker(self.program, module))
            orders = list(itertools.permutations(workers))
            for place, case in list(enumerate(cases))[:: 1 if number % 2 == 0 else -1]:
                if case in self.failures:
                    continue
                try:
                    times[case].append(self._measure(case, workers, orders[(number + place) % len(orders)]))
                except CaseFailed as failure:
                    self.failures[case] = str(failure)
        finally:
            for worker in workers:
                worker.close()

    def _measure(self, case, workers, order):
        """One round of a case: a run to warm up, and two visits to each process.

        Visits to a process are equally far apart for all three, since a visit leaves its operands in the caches.
        """
        if case not in self.plans:
            self.plans[case] = self._in(workers[0], lambda: Plan(workers[0], case, self.seconds))
        plan = self.plans[case]
        for worker in order:  # operands are made, and caches and the allocator settle
            self._in(worker, lambda: worker.times(case, plan.calls, 1))
        visits = {worker: [] for worker in order}
        for worker in order * 2:
            visits[worker].append(statistics.median(worker.times(case, plan.calls, plan.samples)))
        # Other programs only add time.
        return tuple(min(visits[worker]) for worker in workers)

    def _in(self, worker, run):
        try:
            return run()
        except CaseFailed as failure:
            raise CaseFailed(f"{'new' if worker.module == self.modules[1] else 'old'} module: {failure}") from None


def progress(text):
    """Shows `text` in place of the line before, where somebody watches."""
    if sys.stderr.isatty():
        print(f"\r\x1b[K{text}", end="", file=sys.stderr, flush=True)


def note(text):
    """Shows `text` with the time of day as a line of its own, for logs."""
    if not sys.stderr.isatty():
        print(time.strftime("%H:%M:%S"), text, file=sys.stderr, flush=True)


def module_of(build):
    """The module in a build folder. A path to the module itself is fine, too."""
    path = os.path.join(build, "lib", "arrayfold.so") if os.path.isdir(build) else build
    if not os.path.isfile(path):
        raise RuntimeError(f"{build} holds no module: {path} does not exist")
    return os.path.abspath(path)


def without_largest(cases):
    """The cases without the largest size of each that has several."""
    sizes = {}
    for case in cases:
        name, _, n = case.rpartition("/")
        sizes.setdefault(name, []).append(int(n))
    kept = {f"{name}/{n}" for name, found in sizes.items() for n in found if n < max(found) or len(found) == 1}
    return [case for case in cases if case in kept]


def chosen_cases(program, chosen):
    names = subprocess.run([program, "--benchmark_list_tests"], stdout=subprocess.PIPE, text=True, check=True).stdout
    is_named = chosen.filter.startswith(SAME_FAMILIES)
    cases = [case for case in names.split()
             if chosen.filter in case and (is_named or case.partition("/")[0] not in SAME_FAMILIES)]
    cases = without_largest(cases) if chosen.quick else cases
    if not cases:
        raise RuntimeError(f"no case has {chosen.filter} in its name")
    return cases


def arguments():
    parser = argparse.ArgumentParser(prog="scripts/bench", description=HELP, epilog=EPILOG,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("filter", nargs="?", default="", help="only cases with this in their name: text/, xeye, /10")
    parser.add_argument("--compare", metavar="OLD_BUILD", required=True,
                        help="the other build: its folder, or its module; relative paths start at the project's folder")
    parser.add_argument("--new", metavar="BUILD", default="build/release",
                        help="the build to judge (default: %(default)s)")
    parser.add_argument("--program", default="build/release/bin/arrayfold_bench",
                        help="the benchmark program (default: %(default)s)")
    parser.add_argument("--limit", type=float, default=3.0, metavar="PERCENT",
                        help="how much slower a row may be beyond its noise (default: %(default)s)")
    parser.add_argument("--rounds", type=int, help="rounds of all cases (default: 5, with --quick 3)")
    parser.add_argument("--seconds", type=float,
                        help="of one visit to a process, two in a round (default: 0.01, with --quick 0.002)")
    parser.add_argument("--quick", action="store_true",
                        help="less time, and without the largest size of each case: a minute or two for everything")
    parser.add_argument("--core", type=int, help="the core that all processes run on (default: the last)")
    parser.add_argument("--json", metavar="PATH", help="write every round as JSON")
    chosen = parser.parse_args()
    chosen.rounds = chosen.rounds or (3 if chosen.quick else 5)
    chosen.seconds = chosen.seconds or (0.002 if chosen.quick else 0.01)
    return chosen


def measured(compared, cases, rounds, limit):
    """The judged rows. Rows that are too slow in the first measurement are those of the second one."""
    rows = {row.case: row for row in compared.rows(cases, rounds)}
    floor = comparison.noise_floor(rows.values())
    suspects = [one.row.case for one in comparison.judged(rows.values(), floor) if one.is_too_slow(limit)]
    if suspects:
        print(f"Rows that were too slow at first and are measured again: {len(suspects)}.", flush=True)
        rows.update({row.case: row for row in compared.rows(suspects, 2 * rounds)})
    rows = [row for case, row in rows.items() if case not in compared.failures]
    return comparison.judged(rows, floor)


def save(path, modules, rows):
    with open(path, "w") as out:
        json.dump({"old": modules[0], "new": modules[1],
                   "rows": [{"case": one.row.case, "ratio": one.row.ratio, "noise": one.noise, "rounds": one.row.rounds}
                            for one in rows]}, out, indent=1)


def main():
    chosen = arguments()
    started = time.monotonic()
    old, new = module_of(chosen.compare), module_of(chosen.new)
    cases = chosen_cases(chosen.program, chosen)
    os.sched_setaffinity(0, {max(os.sched_getaffinity(0)) if chosen.core is None else chosen.core})
    compared = Comparison(chosen.program, old, new, chosen.seconds)
    limit = chosen.limit / 100
    rows = measured(compared, cases, chosen.rounds, limit)
    for case, message in compared.failures.items():
        print(f"Not compared: {case}: {message}")
    if chosen.json:
        save(chosen.json, (old, new), rows)
    if rows:
        print(comparison.changes(rows, limit) + "\n")
        print(comparison.summary(rows, limit, (os.path.getsize(old), os.path.getsize(new))))
    print(f"{time.monotonic() - started:.0f} seconds.")
    failed_in_new = [case for case, message in compared.failures.items() if message.startswith("new")]
    return comparison.exit_status(rows, limit, failed_in_new)


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (RuntimeError, OSError, subprocess.CalledProcessError) as error:
        print(f"error: {error}", file=sys.stderr)
        sys.exit(2)
