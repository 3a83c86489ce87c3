# tests/conformance/table_is_current.py: the table of calls has the calls of calls.txt and of the pages
#
# Usage: table_is_current.py WRITE_CALLS CALLS TABLE
#
# What the calls do is compared by hvm --conformance, which knows what may differ between machines.

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

write_calls, calls, table = sys.argv[1:4]


def rows_of(path):
    lines = [json.loads(line) for line in pathlib.Path(path).read_text().splitlines()]
    kept = ("id", "documents", "preparation", "call", "compared")
    return lines[0], [{key: line.get(key) for key in kept} for line in lines[1:]]


class Table(unittest.TestCase):
    def test_table_has_the_calls_that_write_calls_makes_now(self):
        with tempfile.TemporaryDirectory() as folder:
            made = pathlib.Path(folder) / "calls.jsonl"
            subprocess.run([write_calls, calls, made], check=True, stdout=subprocess.DEVNULL)
            head, rows = rows_of(made)
        old_head, old_rows = rows_of(table)
        self.assertEqual(old_head, head, "write_calls makes another head")
        for old, new in zip(old_rows, rows):
            self.assertEqual(old, new, "the table is not that of write_calls")
        self.assertEqual(len(old_rows), len(rows))

    def test_lines_that_write_calls_cannot_read_are_named(self):
        with tempfile.TemporaryDirectory() as folder:
            for text, problem in (("\nxsum(", "calls.txt:2: xsum( does not come to the module: "),
                                  ("print(1)", "calls.txt:1: print(1) does not come to the module: "),
                                  ("let a = nothing\na + 1", "calls.txt:2: ")):
                source = pathlib.Path(folder) / "calls.txt"
                source.write_text(text)
                ended = subprocess.run([write_calls, source, source.with_name("made")], capture_output=True, text=True)
                self.assertEqual(ended.returncode, 1)
                self.assertIn(problem, ended.stderr)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
