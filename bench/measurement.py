# bench/measurement.py: the module's time and NumPy's for one case, interleaved
#
# Each measurement, of either side, is a process of its own: what earlier cases left in a heap decides whether a large
# block needs new pages. Both sides count the processor time of their thread, which excludes the time of other programs
# on the core.

import ctypes
import json
import multiprocessing
import os
import re
import statistics
import subprocess
import time
import timeit

import numpy


# Parameters of mallopt, in the C library's malloc.h.
M_TRIM_THRESHOLD = -1
M_MMAP_THRESHOLD = -3
# The largest block after whose release the C library adapts its thresholds: 32 MiB with what it adds.
LARGEST_ADAPTING_BLOCK = (32 << 20) - 8192


def keep_freed_memory(mebibytes):
    """Lets the C library keep so much freed memory, in this process and in those that it starts."""
    allocator = ctypes.CDLL(None)
    for name, parameter in (("TRIM", M_TRIM_THRESHOLD), ("MMAP", M_MMAP_THRESHOLD)):
        if not allocator.mallopt(parameter, mebibytes << 20):
            raise RuntimeError(f"the C library does not keep {mebibytes} MiB")
        os.environ[f"MALLOC_{name}_THRESHOLD_"] = str(mebibytes << 20)


def adapt_thresholds():
    """Lets the C library keep freed memory as in a process that has used large arrays before. main.cpp does the same.

    It then takes blocks of up to 32 MiB from its heap, and keeps up to 64 MiB at the end of that.
    """
    allocator = ctypes.CDLL(None)
    allocator.malloc.restype = ctypes.c_void_p
    allocator.malloc.argtypes = [ctypes.c_size_t]
    allocator.free.argtypes = [ctypes.c_void_p]
    allocator.free(allocator.malloc(LARGEST_ADAPTING_BLOCK))


class Ours:
    """The benchmark program; each measurement is a process of its own."""

    def __init__(self, program):
        self.program = program
        self.compiler = "unknown"  # what it was built with, once it has run

    def names(self):
        return self._run("--benchmark_list_tests").split()

    def unmeasured(self):
        """The functions of the module that no case calls."""
        return self._run("--unmeasured").split()

    def times(self, names, seconds):
        """Nanoseconds per call for each name. Raises RuntimeError when a case reports an error."""
        pattern = "^(" + "|".join(re.escape(name) for name in names) + ")$"
        text = self._run(f"--benchmark_filter={pattern}", f"--benchmark_min_time={seconds}",
                         f"--benchmark_min_warmup_time={seconds / 10}", "--benchmark_format=json")
        report = json.loads(text)
        self.compiler = report["context"]["compiler"]
        rows = report["benchmarks"]
        for row in rows:
            if row.get("error_occurred"):
                raise RuntimeError(f"{row['name']}: {row['error_message']}")
        return {row["name"]: row["cpu_time"] for row in rows}

    def _run(self, *options):
        run = subprocess.run([self.program, *options], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        if run.returncode != 0:
            raise RuntimeError(f"{self.program} ended with {run.returncode}: {run.stderr.strip()}")
        return run.stdout


def names_of(case):
    """The names that the expressions of a case use: NumPy, n, and what the setup of the case defines."""
    names = {"np": numpy, "n": case.n}
    exec(case.case.setup, names)
    return names


class Expression:
    """An expression in NumPy, timed in this process."""

    def __init__(self, text, names):
        self.timer = timeit.Timer(text, timer=time.thread_time_ns, globals=names)  # global, so that calls share them
        self.calls = 1

    def once(self):
        """Runs it one time. Throws what the expression throws."""
        self.timer.timeit(1)

    def time(self, seconds):
        """Nanoseconds per call, after a first one, over calls that together take about as long as asked."""
        self.once()
        spent = self.timer.timeit(self.calls)
        while spent < 0.8e9 * seconds:
            self.calls = max(2 * self.calls, int(self.calls * 1e9 * seconds / max(spent, 1)))
            spent = self.timer.timeit(self.calls)
        return spent / self.calls


def numpy_time(case, text, seconds):
    """Nanoseconds per call of an expression in NumPy, in a process of its own. Raises RuntimeError when it fails."""
    processes = multiprocessing.get_context("fork")  # NumPy is loaded already
    receiver, sender = processes.Pipe(duplex=False)
    process = processes.Process(target=_send_time, args=(sender, case, text, seconds))
    process.start()
    sender.close()
    try:
        return receiver.recv()
    except EOFError:
        raise RuntimeError(f"{case.name}: NumPy's side failed: {text}") from None
    finally:
        process.join()


def _send_time(sender, case, text, seconds):
    adapt_thresholds()
    sender.send(Expression(text, names_of(case)).time(seconds))


def measure(case, ours, rounds, seconds):
    """One row of the table: rounds of the module, then NumPy; three times as many where they scatter.

    Times are medians of the rounds, the ratio is the median of the rounds' ratios, so that drift cancels.
    """
    peer = case.case.peer(case.n)
    pairs = []
    for _ in range(3):
        for _ in range(rounds):
            pairs.append((ours.times([case.name], seconds)[case.name], peer and numpy_time(case, peer, seconds)))
        if not scatters(pairs):
            break
    row = {
        "case": case.name,
        "n": case.n,
        "ours_ns": statistics.median(pair[0] for pair in pairs),
        "numpy_ns": peer and statistics.median(pair[1] for pair in pairs),
        "ratio": peer and statistics.median(ratios_of(pairs)),
        "numpy": peer,
        "ratio_bound": case.case.ratios[case.n],
        "ns_limit": case.case.limits.get(case.n),
        "is_untouched": case.n in case.case.untouched,
        "rounds": pairs,
    }
    beside = case.case.beside.get(case.n)
    if beside:
        row["beside"] = beside
        row["beside_ns"] = statistics.median(numpy_time(case, beside, seconds) for _ in range(rounds))
    return row


def ratios_of(pairs):
    """The module's time over NumPy's, round by round; the module's time alone without a peer."""
    return [pair[0] / pair[1] if pair[1] else pair[0] for pair in pairs]


def scatters(pairs):
    """True when the middle half of the rounds spans more than the tenth that counts as noise."""
    ratios = ratios_of(pairs)
    low, middle, high = statistics.quantiles(ratios, n=4) if len(ratios) > 1 else [ratios[0]] * 3
    return high - low > 0.1 * middle
