# scripts/mutation/suites.py: the tests that mutants are run against, case by case

import math
import os
import pathlib
import re
import resource
import signal
import subprocess
import tempfile
import time

# The programs of the preset release load the module with mutants.
MODULE_TESTS = ["create_test", "random_test", "first_draws_test", "binning_test", "elementwise_test",
                "elementwise_host_test", "linalg_test", "linalg_library_test", "order_test", "reduce_test",
                "contract_test", "faults_test"]
# Programs that have parts of the module inside are built with mutants.
TREE_TESTS = ["array_test", "reader_test", "object_test", "kernels_test", "self_contained_parts_test",
              "unfriendly_host_test"]
TREE_TARGETS = [*TREE_TESTS, "second_host"]
# The module for closed hosts differs in its sort and its choice of a target.
SELF_CONTAINED_TESTS = {"order_test": "*Sorts*:OrderingTest.*"}
RELEASE_TARGETS = [*MODULE_TESTS, "hvm", "arrayfold_description"]
MEMORY = 6 << 30
FILES = 64 << 20
WAITING = 20  # times as long as its processor time a process takes on a busy machine


def limit_resources(seconds):
    limits = {resource.RLIMIT_AS: MEMORY, resource.RLIMIT_FSIZE: FILES, resource.RLIMIT_CORE: 0,
              resource.RLIMIT_CPU: seconds}
    for what, limit in limits.items():
        resource.setrlimit(what, (limit, limit))


class Suite:
    """Tests that one program runs. A subclass tells which, and how the program is told to run some."""

    def __init__(self, name, environment):
        self.name = name
        self.environment = {**os.environ, "OPENBLAS_NUM_THREADS": "1", **environment}

    def run(self, cases, seconds, environment):
        """Runs some cases. The processor time that they take, or None if one fails or they take more than `seconds`."""
        with tempfile.TemporaryDirectory() as folder:
            process = subprocess.Popen(self.command(cases, pathlib.Path(folder)), cwd=folder, start_new_session=True,
                                       stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                       env={**self.environment, **environment},
                                       preexec_fn=lambda: limit_resources(math.ceil(seconds)))
            try:
                return self.wait(process, WAITING * seconds)
            finally:
                try:
                    os.killpg(process.pid, signal.SIGKILL)  # what it started, too
                except ProcessLookupError:
                    pass

    @staticmethod
    def wait(process, seconds):
        end, pause = time.monotonic() + seconds, 0.002
        while True:
            ended, status, usage = os.wait4(process.pid, os.WNOHANG)
            if ended:
                process.returncode = status
                return usage.ru_utime + usage.ru_stime if status == 0 else None
            if time.monotonic() > end:
                process.kill()
                process.wait()
                return None
            time.sleep(pause)
            pause = min(1.5 * pause, 0.05)


class Program(Suite):
    """A program of GoogleTest."""

    def __init__(self, build, program, name=None, environment=(), filter="*"):
        super().__init__(name or program, dict(environment))
        self.path, self.filter = build / "bin" / program, filter

    def cases(self):
        listed = subprocess.run([self.path, "--gtest_list_tests", f"--gtest_filter={self.filter}"], text=True,
                                check=True, stdout=subprocess.PIPE, env=self.environment).stdout
        cases, group = [], ""
        for line in listed.splitlines():
            text = line.split("#")[0].rstrip()
            if re.fullmatch(r"\S+\.", text):
                group = text
            elif text.startswith("  "):
                cases.append(group + text.strip())
        return cases

    def command(self, cases, folder):
        flags = folder / "flags"
        flags.write_text("--gtest_filter=" + ":".join(cases) + "\n--gtest_fail_fast\n--gtest_brief=1\n")
        return [self.path, f"--gtest_flagfile={flags}"]


class Scripts(Suite):
    """The script tests, run by hvm over a module."""

    def __init__(self, name, build, module, project):
        super().__init__(name, {})
        self.path, self.module, self.folder = build / "bin/hvm", module, project / "tests/scripts"

    def cases(self):
        return [str(path.relative_to(self.folder)) for path in sorted(self.folder.rglob("*.hvm"))]

    def command(self, cases, folder):
        return [self.path, "--module", self.module, "--jobs", "1", "--time-limit", "10", "--test",
                *(self.folder / case for case in cases)]


def all_suites(project, tree):
    """`tree` is the build with mutants."""
    release = project / "build/release"
    module = {"ARRAYFOLD_TEST_MODULE": str(tree / "lib/arrayfold.so")}
    suites = [Program(tree, program) for program in TREE_TESTS]
    for program in MODULE_TESTS:
        environment = dict(module)
        if program == "elementwise_host_test":
            environment["LD_LIBRARY_PATH"] = str(release / "tests/plugin/elementwise/host")
        suites.append(Program(release, program, environment=environment))
    # Its RUNPATH leads to no host.
    self_contained = {"ARRAYFOLD_TEST_MODULE": str(tree / "self-contained/arrayfold.so"),
                      "LD_LIBRARY_PATH": str(release / "lib")}
    for program, cases in SELF_CONTAINED_TESTS.items():
        suites.append(Program(release, program, program + " (self-contained)", self_contained, cases))
    suites.append(Scripts("scripts", release, tree / "lib/arrayfold.so", project))
    suites.append(Scripts("scripts (second host)", release, tree / "tests/second_host/lib/arrayfold.so", project))
    return suites
