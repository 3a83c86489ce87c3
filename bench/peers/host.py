# bench/peers/host.py: the peers of host.cpp
#
# Sizes are numbers in the file or text, in ten columns.

from . import Case

READ = 'np.loadtxt(path, delimiter=",", skiprows=1)'
FILE = "import files; path = files.csv_file(n)"
LOOPS = "import loops; a = loops.matrix(n)"
# Global variables on both sides: a script of hvm has no others outside of its functions.
LUA = "import loops; lua = loops.Lua(f'x = 0; for i = 0, {n} - 1 do x = x + i end')"
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
    # The peer of the additions is Lua, and that of the elements a loop of Python over the elements of a NumPy array.
    "loop_additions": Case(numpy="lua.run()", setup=LUA, ratios={1_000_000: 3.0}),
    "loop_elements": Case(numpy="loops.sum_of_elements(a)", setup=LOOPS, ratios={100_000: 1.0}),
}
