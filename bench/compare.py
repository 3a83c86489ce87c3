#!/usr/bin/python3
# bench/compare.py: each case of the module and its peer in NumPy, in turns, as one table of ratios

import argparse
import itertools
import json
import os
import sys

# Set before NumPy is loaded, and inherited by the processes that are started here.
os.environ["OPENBLAS_NUM_THREADS"] = "1"
os.environ["OMP_NUM_THREADS"] = "1"
sys.dont_write_bytecode = True  # no cache files beside the sources

import files
import measurement
import peers
import report


def arguments():
    parser = argparse.ArgumentParser(description="Compares the module with NumPy, case by case.",
                                     epilog="With --compare OLD_BUILD, scripts/bench compares two builds of the module "
                                            "instead: see scripts/bench --compare OLD_BUILD --help.")
    parser.add_argument("filter", nargs="?", default="", help="only cases with this in their name: text/, xeye, /10")
    parser.add_argument("--program", required=True, help="the benchmark program")
    parser.add_argument("--rounds", type=int, default=7, help="rounds of the module, then NumPy (default %(default)s)")
    parser.add_argument("--seconds", type=float, default=0.05, help="of one measurement (default %(default)s)")
    parser.add_argument("--core", type=int, help="the core that both run on (default: the last)")
    parser.add_argument("--json", metavar="PATH", help="write the rows as JSON")
    parser.add_argument("--save", action="store_true", help="write results/<machine>.md, .json, .svg; takes every case")
    parser.add_argument("--keep-memory", type=int, metavar="MIB",
                        help="let both keep so much freed memory for the next arrays, from 0 to 2047 MiB, as hvm "
                             "--keep-memory does; the results are saved under a name of their own")
    parser.add_argument("--check", action="store_true",
                        help="measure nothing: run every case once on both sides, with 100000 elements at most where "
                             "it has such a size")
    chosen = parser.parse_args()
    if chosen.save and chosen.filter:
        parser.error("--save takes every case, so it goes without a filter")
    if chosen.keep_memory is not None and not 0 <= chosen.keep_memory <= 2047:
        parser.error("--keep-memory takes 0 to 2047 MiB: the C library reads the bytes as an int")
    return chosen


def check_lists(cases, ours):
    """Ends the program when the two lists do not name the same cases, or when a function of the module has no case."""
    wanted, registered = [case.name for case in cases], ours.names()
    problems = [f"only in peers/: {name}" for name in sorted(set(wanted) - set(registered))]
    problems += [f"only in the program: {name}" for name in sorted(set(registered) - set(wanted))]
    problems += [f"twice in the program: {name}" for name in sorted(set(registered)) if registered.count(name) > 1]
    problems += [f"{case.name}: a bound for a size that the case does not have: {n}" for case in cases
                 for n in {*case.case.limits, *case.case.beside, *case.case.untouched} if n not in case.case.ratios]
    problems += [f"{case.name}: a ratio without a peer" for case in cases
                 if case.case.ratios[case.n] is not None and case.case.peer(case.n) is None]
    problems += [f"no case calls {function}" for function in ours.unmeasured()]
    if problems:
        sys.exit("\n".join(problems))


def run_once(cases, ours):
    """Runs every case once on both sides.

    Most of the time goes into random operands, so NumPy's cases of one size and setup share theirs.
    """
    names = [case.name for case in cases]
    missing = set(names) - set(ours.times(names, 0))
    if missing:
        sys.exit("these cases gave no time: " + ", ".join(sorted(missing)))
    with_peer = [case for case in cases if expressions(case)]
    by_operands = lambda case: (case.n, case.case.setup)
    for _, alike in itertools.groupby(sorted(with_peer, key=by_operands), key=by_operands):
        shared = None
        for case in alike:
            shared = shared or measurement.names_of(case)
            for text in expressions(case):
                measurement.Expression(text, shared).once()
    print(f"{len(cases)} cases ran on both sides")


def expressions(case):
    """What a case runs in NumPy: its peer and the expression beside it, where there are such."""
    return [text for text in (case.case.peer(case.n), case.case.beside.get(case.n)) if text]


def compare(cases, ours, chosen):
    """Measures, and shows each row as it comes."""
    print(report.head(), flush=True)
    rows = []
    for case in cases:
        rows.append(measurement.measure(case, ours, chosen.rounds, chosen.seconds))
        print(report.line(report.cells(rows[-1])), flush=True)
    for text in [*report.notes(rows), *report.summary(rows)]:
        print(text)
    return rows


def main():
    chosen = arguments()
    with files.folder_beside(chosen.program):
        return run(chosen)


def run(chosen):
    ours = measurement.Ours(chosen.program)
    every_case = list(peers.all_cases())
    check_lists(every_case, ours)
    cases = [case for case in every_case if chosen.filter in case.name]
    if not cases:
        sys.exit(f"no case has {chosen.filter} in its name")
    if chosen.check:
        return run_once([case for case in cases if case.n <= max(100_000, min(case.case.ratios))], ours)

    if chosen.keep_memory is not None:
        measurement.keep_freed_memory(chosen.keep_memory)
    core = max(os.sched_getaffinity(0)) if chosen.core is None else chosen.core
    os.sched_setaffinity(0, {core})
    rows = compare(cases, ours, chosen)
    facts = report.machine(ours.compiler, chosen.keep_memory)
    if chosen.json:
        with open(chosen.json, "w") as out:
            json.dump({"machine": facts, "rows": rows}, out, indent=1)
    if chosen.save:
        print("saved", report.save(os.path.join(os.path.dirname(__file__), "results"), facts, rows,
                                    chosen.keep_memory))


if __name__ == "__main__":
    try:
        main()
    except RuntimeError as error:
        sys.exit(f"error: {error}")
