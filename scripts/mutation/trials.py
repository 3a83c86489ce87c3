# scripts/mutation/trials.py: which cases reach a mutant, and whether they notice it
#
# Both are files of the build folder, so that a run that was stopped goes on.

import concurrent.futures
import json
import tempfile
import threading
import time

# In seconds of processor time:
SLOW = 0.1  # from here on a case runs in a process of its own
FEW = 8  # cases of a suite that a mutant meets first
LIMIT = 2  # what a process may take beside eight times what its cases take without a mutant
REACHED_BYTES = 1 << 14  # as mutant.hpp has it


class Survey:
    """For each case its processor time and the mutants that it reaches, from a run without a mutant."""

    def __init__(self, file, tree_hash, suites):
        self.file, self.suites = file, suites
        self.cases = {}  # by suite and case: seconds and numbers; none for a case that fails by itself
        if file.exists():
            kept = json.loads(file.read_text())
            if kept["tree"] == tree_hash:
                self.cases = kept["cases"]
        self.tree_hash = tree_hash

    def complete(self, jobs):
        """Runs the cases that are not known yet."""
        new = []
        for suite in self.suites:
            known = self.cases.setdefault(suite.name, {})
            listed = suite.cases()
            new += [(suite, case) for case in listed if case not in known]
            for gone in known.keys() - set(listed):
                del known[gone]
        if new:
            print(f"{len(new)} cases of tests tell which mutants they reach", flush=True)
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            for (suite, case), found in zip(new, pool.map(lambda one: self.run(*one), new)):
                self.cases[suite.name][case] = found
        self.file.write_text(json.dumps({"tree": self.tree_hash, "cases": self.cases}))
        failing = [f"{suite} {case}" for suite, cases in self.cases.items() for case, found in cases.items()
                   if found is None]
        if failing:
            print(f"{len(failing)} cases fail without a mutant and are left out:", *failing, sep="\n  ", flush=True)

    @staticmethod
    def run(suite, case):
        with tempfile.NamedTemporaryFile() as reached:
            reached.write(bytes(REACHED_BYTES))
            reached.flush()
            seconds = suite.run([case], 120, {"ARRAYFOLD_MUTANTS_REACHED": reached.name})
            if seconds is None:
                return None
            reached.seek(0)
            return [round(seconds, 3), [n for n, byte in enumerate(reached.read()) if byte]]

    def batches(self):
        """For each mutant what to run, in this order: cases of one suite, with their time. Quick cases of a suite run
        together, since starting a program takes as long as most cases."""
        by_number = {}
        for suite in self.suites:
            for case, found in self.cases[suite.name].items():
                for number in found[1] if found else ():
                    by_number.setdefault(number, {}).setdefault(suite, []).append((found[0], case))
        return {number: self.in_order(by_suite) for number, by_suite in by_number.items()}

    @staticmethod
    def in_order(by_suite):
        """A few quick cases of each suite, which notice most mutants, then the others from the quickest on."""
        first, others = [], []
        for suite, cases in by_suite.items():
            quick = sorted(case for case in cases if case[0] < SLOW)
            parts = [quick[:FEW], quick[FEW:], *([case] for case in cases if case[0] >= SLOW)]
            for part, batches in zip(parts, [first] + [others] * len(parts)):
                if part:
                    batches.append((sum(case[0] for case in part), suite, [case[1] for case in part]))
        by_time = lambda batch: batch[0]
        return sorted(first, key=by_time) + sorted(others, key=by_time)


def within(budget, batches):
    """The first batches that take no more than `budget` seconds together; in any case the first one."""
    taken, total = [], 0
    for batch in batches:
        total += batch[0]
        if taken and total > budget:
            break
        taken.append(batch)
    return taken


class Trials:
    """What became of each mutant."""

    def __init__(self, file, tree_hash):
        self.file, self.outcomes, self.lock = file, {}, threading.Lock()
        lines = file.read_text().splitlines() if file.exists() else []
        if lines[:1] == [tree_hash]:
            for line in lines[1:]:
                name, _, outcome = line.rpartition("\t")
                self.outcomes[name] = outcome
        else:
            file.write_text(tree_hash + "\n")

    def run(self, mutants, batches, budget, jobs):
        """Runs the mutants that have no outcome yet, each against the quickest of its cases that take `budget` seconds
        together."""
        # A part of a run is spread over the module as the whole is.
        left = sorted((m for m in mutants if m.name not in self.outcomes), key=lambda m: m.rank())
        if left:
            print(f"{len(left)} mutants run, {len(mutants) - len(left)} are known", flush=True)
        with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
            run = lambda mutant: self.run_one(mutant, within(budget, batches.get(mutant.number, ())))
            for count, _ in enumerate(pool.map(run, left), 1):
                if count % 50 == 0:
                    print(f"  {count} of {len(left)}, {time.strftime('%H:%M:%S')}", flush=True)

    def run_one(self, mutant, batches):
        outcome = "survives" if batches else "is not reached"
        for seconds, suite, cases in batches:
            if suite.run(cases, LIMIT + 8 * seconds, {"ARRAYFOLD_MUTANT": str(mutant.number)}) is None:
                outcome = f"killed by {suite.name}"
                break
        with self.lock:
            self.outcomes[mutant.name] = outcome
            with self.file.open("a") as file:
                file.write(f"{mutant.name}\t{outcome}\n")

    def forget(self, names):
        """Forgets what became of these, so that they run once more."""
        self.outcomes = {name: outcome for name, outcome in self.outcomes.items() if name not in names}
        tree_hash = self.file.read_text().split("\n", 1)[0]
        self.file.write_text(tree_hash + "\n" + "".join(f"{n}\t{o}\n" for n, o in self.outcomes.items()))
