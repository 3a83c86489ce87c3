# bench/files.py: the files that cases of the family `host` read, the same for the benchmark program and its peers

import contextlib
import os
import tempfile

import numpy

COLUMNS = 10


@contextlib.contextmanager
def folder_beside(program):
    """A folder for the files of a run, on the disk of the build. The benchmark program learns it from the environment."""
    with tempfile.TemporaryDirectory(prefix="bench-files-", dir=os.path.dirname(os.path.abspath(program))) as folder:
        os.environ["ARRAYFOLD_BENCH_FILES"] = folder
        yield


def named(name):
    return os.path.join(os.environ["ARRAYFOLD_BENCH_FILES"], name)


def normal_columns(n):
    return numpy.random.default_rng(1).standard_normal((n // COLUMNS, COLUMNS))


def csv_file(n):
    """The path of a file of n normal numbers in ten columns under names. The process that needs it first makes it."""
    path = named(f"normal-{n}.csv")
    if not os.path.exists(path):
        with open(path + ".new", "w") as out:
            out.write(",".join(f"c{i}" for i in range(COLUMNS)) + "\n")
            for row in normal_columns(n):
                out.write(",".join(map(repr, row.tolist())) + "\n")
        os.rename(path + ".new", path)
    return path
