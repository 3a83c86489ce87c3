# bench/peers/host.py: the peers of host.cpp
#
# Sizes are numbers in the file or text, in ten columns.

from . import Case

READ = 'np.loadtxt(path, delimiter=",", skiprows=1)'
FILE = "import files; path = files.csv_file(n)"
LISTS = "import files, json; lists = files.normal_columns(n).T.tolist()"

CASES = {
    # Ten tables of boxed numbers, where NumPy makes one array.
    "read_csv": Case(numpy=READ, setup=FILE, ratios={100_000: 0.8, 10_000_000: 0.8}),
    "read_csv_array": Case(numpy=READ, setup=FILE, ratios={100_000: 0.5, 10_000_000: 0.5}),
    "write_csv": Case(
        numpy='np.savetxt(path, a, delimiter=",", fmt="%.17g")',
        setup='import files; path = files.named("written.csv"); a = files.normal_columns(n)',
        ratios={100_000: 0.25, 1_000_000: 0.25},
    ),
    "parse_json": Case(
        numpy="json.loads(text)",
        setup=LISTS + "; text = json.dumps(lists)",
        ratios={1_000: 1.2, 100_000: 1.2},
    ),
    "to_json": Case(numpy="json.dumps(lists)", setup=LISTS, ratios={1_000: 0.3, 100_000: 0.3}),
}
