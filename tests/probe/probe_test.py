# tests/probe/probe_test.py: what the probe says of hosts that keep the contract, and of hosts that do not
#
# Usage: probe_test.py PROJECT PROBE_HOST PROBE HVM MUTANTS UNVERSIONED_FOLDER EMBEDDING_FOLDER C_COMPILER
#
# The reference host keeps all promises. A fault is put before it by a library with other operations, or into copies of
# its libraries and of the example's sources. The probe names exactly the promises that the fault breaks, and the
# process goes on.

import concurrent.futures
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

project, probe_host, probe, hvm, mutants, unversioned, embedding = map(pathlib.Path, sys.argv[1:8])
compiler = sys.argv[8]
PAGE = project / "docs" / "host-contract.md"
OPERATIONS = re.findall(r"\b(?:UNUSED|USED)\((HVM_\w+)\)", (project / "include" / "arrayfold" / "host.h").read_text())

# Under the sanitizers, libraries are not looked for beside the module that opens them.
ENVIRONMENT = {**os.environ, "LD_LIBRARY_PATH": str(probe.parent),
               "ASAN_OPTIONS": "detect_leaks=0:allocator_may_return_null=1"}
SANITIZED = b"__asan_init" in probe.read_bytes()
CANNOT_LACK = "with sanitizers the kernel library refers to its own operations, so that none can be taken out of it"
# All operations are in one list of the probe. Some from every family show that it is used.
MISSING = [*OPERATIONS[::6], "HVM_ReallocNoLeak", "HVM_GCFreeTable", "HVM_DelStrm"]
OPERATIONS_EXIST = ("The 44 operations exist, HVM_FreeMatrix and HVM_DelStrm among them, "
                    "which a module has nothing to pass to.")

# The faults of mutants.cpp, and how the sentences of all promises begin that each breaks.
TEXTS_READ = ["HVM_SetString and", "HVM_SetStringEx and", "HVM_SetConstStringEx and", "HVM_DupObject makes deep"]
ENDS_OF_OBJECTS = ["A setter releases", "An object has its manager", "HVM_SetTypeAny takes null",
                   "Destroy is called once", "HVM_NewHash returns", "A table owns", "HVM_GCFreeTable frees",
                   "HVM_FreeObj and HVM_FreeObjs", "HVM_FreeObjectContent releases", "HVM_DupObject copies numbers"]
FAULTS = {
    "text is an object": ["HVM_AnyCheck is true"],
    "object needs no content": ["HVM_NewAny returns null if create"],
    "object is not given": ["HVM_GetAny returns", "HVM_DupObject copies numbers"],
    "record takes no object": ["HVM_SetTypeAny makes", "HVM_AnyCheck is true", "HVM_GetAny returns",
                               *ENDS_OF_OBJECTS],
    "unknown type has objects": ["HVM_NewAny returns null for an unknown name"],
    "null object crashes": ["HVM_SetTypeAny takes null"],
    "types cannot be made": ["HVM_NewAnyMan makes"],
    "types crash": ["HVM_NewAnyMan makes"],
    "create is not called": ["HVM_NewAny calls the create callback"],
    "destroy is not called": ENDS_OF_OBJECTS,
    "destroy is called twice": ENDS_OF_OBJECTS,
    "name is copied": [],  # no fault: modules compare the text, too
    "name is cut": ["HVM_NewAnyMan makes"],
    "integer of 64 bits is no number": ["A number that a module itself writes", "HVM_NumberCheck is true"],
    "text has no number": ["HVM_AsInt returns some number"],
    "integer of 64 bits reads as zero": ["HVM_AsInt returns the whole number"],
    "integer of 64 bits is cut": ["A number that a module itself writes", "HVM_AsInt64 returns"],
    "double reads as float": ["HVM_AsDouble returns"],
    "truth is the low byte": ["HVM_AsBool is false"],
    "text throws": ["HVM_AsString returns the characters", "HVM_AsString returns null or", *TEXTS_READ],
    "text has no terminator": ["HVM_AsString returns the characters"],
    "text of nil leads nowhere": ["HVM_AsString returns null or"],
    "table has no text": ["HVM_AsString returns null or"],
    "text of what is none is null": [],  # no fault: null means no text
    "check exits": ["HVM_StringCheckAll is true"],
    "wide text is no text": ["HVM_StringCheckAll is true"],
    "length has the terminator": ["HVM_StringLen returns", *TEXTS_READ],
    "setter does not release": ["A setter releases"],
    "nineteen bytes are written": ["An operation that writes a record writes 18 bytes"],
    "integer has 16 bits": ["HVM_SetInt stores"],
    "integer of 64 bits has another tag": ["HVM_SetInt64 stores"],
    "zero has no sign": ["HVM_SetReal stores"],
    "text is not copied": ["HVM_SetString and"],
    "last character is lost": ["HVM_SetStringEx and"],
    "context of a constant is used": ["An operation that writes a record", "HVM_StringCheckAll is true",
                                      "HVM_StringLen returns", "HVM_AsString returns the characters",
                                      "A text of tag 2 or 24",
                                      "HVM_SetConstStringEx and", "HVM_Free frees", "A setter releases"],
    "table has another tag": ["HVM_ForceTable makes", "The capacity of a table"],
    "capacity of zero makes no table": ["The capacity of a table"],
    "key in a record is another one": ["HVM_HashSetInt and HVM_HashSet return one slot"],
    "text is not found": ["HVM_HashSet and HVM_HashGet know text"],
    "global nil holds zero": ["HVM_GetGlobalNilObj always"],
    "capacity is a limit": ["HVM_NewHash returns", "A table owns", "HVM_GCFreeTable frees"],
    "new slot has lifetime 0": ["A new slot holds nil", "A table owns"],
    "absent key has a nil record": ["HVM_HashGetInt and HVM_HashGet return null"],
    "nil is absent": ["HVM_HashGetInt and HVM_HashGet return the slot"],
    "bound is the count": ["HVM_HashGetBounds writes"],
    "bounds take forever": ["HVM_HashGetBounds writes"],
    "new table is not freed": ["HVM_GCFreeTable frees"],
    "new records hold zero": ["HVM_NewObject returns"],
    "record ends without its content": ["HVM_FreeObj and HVM_FreeObjs"],
    "number cannot be released": ["HVM_FreeObjectContent accepts"],
    "released slot has lifetime 0": ["HVM_FreeObjectContent releases"],
    "copy is shallow": ["HVM_DupObject makes deep"],
    "size has 32 bits": ["HVM_Malloc takes"],
    "content is lost": ["HVM_Realloc2 and"],
    "content is changed": ["HVM_Realloc2 and"],
}
# Where a copy of the example's sources has more bytes, and what the probe says: the line of the header and its
# replacement, the offset of payloads, a promise and the finding.
GAPS = {
    "a value": ("uint8_t tag;", "uint8_t tag, gap;", 2,
                "A record has its payload at offset 1.", "a number is stored at offset 2 of its record, not at 1"),
    "an item": ("HostValue key, value;", "HostValue key; uint8_t gap; HostValue value;", 1,
                "A slot is the value in its item, with the key 18 bytes before it.",
                "the key 1 is not 18 bytes before its value"),
    "a table": ("HostHashItem* items;", "HostHashItem* items; int32_t gap;", 1,
                "A walk of index and items meets every entry once.",
                "the walk meets the entry of the key 0 0 times"),
    "an object": ("typedef struct HostAny { uint32_t host, state; AnyMan",
                  "typedef struct PACKED HostAny { uint32_t host, state; uint8_t gap; AnyMan", 1,
                  "An object has its manager at offset 8",
                  "another pointer than the manager is at offset 8"),
}
# Functions of a library of the interpreter with one wrong value, as C: lgamma, erf and the finding.
WRONG_VALUES = (
    ("x == 0 ? 1 : (double)lgammal(x)", "(double)erfl(x)", "lgamma(0) is 1, not inf"),
    ("(double)lgammal(x)", "fabs(x) < 1e-200 ? 0 : (double)erfl(x)",
     "erf(1e-300) is 0, not 1.1283791670955126e-300"),
)
# Promises that other tests break.
ELSEWHERE = ["libHVMkrnl.so and libHVMInterp.so are found", "The 44 operations exist", "lgamma and erf have the version",
             "lgamma and erf have the values", "The frame, call_function and read_slot"]
# The example serves what its program needs. For the probe it gets the setters of numbers.
SETTERS = """
void HVM_SetInt(HostContext* c, HostValue* v, int x) { put(c, v, (HostValue){.tag = INTEGER, .integer = x}); }
void HVM_SetReal(HostContext* c, HostValue* v, double x) { put(c, v, (HostValue){.tag = REAL, .real = x}); }
"""


class Summary:
    def __init__(self, text):
        count, *rest = text.splitlines()
        self.counts = [int(word) for word in re.findall(r"\d+", count)]  # all, kept, broken, not checked
        self.broken, self.unchecked = {}, {}
        part = None
        for line in rest:
            if line in ("Broken:", "Not checked:"):
                part = self.broken if line == "Broken:" else self.unchecked
            elif entry := re.match(r" *\d+\. (.*)", line):
                sentence = entry.group(1)
            else:
                part[sentence] = line.strip()


class Probe(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        workplace = tempfile.TemporaryDirectory()
        self.addCleanup(workplace.cleanup)
        self.folder = pathlib.Path(workplace.name)

    def summary(self, *words, **environment):
        return Summary(self.report(*words, **environment))

    def report(self, module=probe, offset=1, **environment):
        environment = {key: str(value) for key, value in environment.items()}
        ended = subprocess.run([probe_host, module, str(offset)], capture_output=True, text=True, timeout=60,
                               env={**ENVIRONMENT, **environment})
        self.assertEqual(ended.returncode, 0, ended.stdout + ended.stderr)
        return ended.stdout

    def assert_broken(self, summary, beginnings):
        """The broken promises are those whose sentences begin like this."""
        matched = [any(sentence.startswith(start) for sentence in summary.broken) for start in beginnings]
        self.assertTrue(all(matched) and len(summary.broken) == len(beginnings), f"{beginnings}\n{summary.broken}")

    def test_reference_host_keeps_all_promises(self):
        summary = self.summary()
        self.assertEqual((summary.broken, summary.unchecked), ({}, {}))
        self.assertEqual(summary.counts, [len(self.sentences()), len(self.sentences()), 0, 0])

    def sentences(self):
        """The promises of the page, without marks of code."""
        part = PAGE.read_text().split("\n## Operations\n")[1].split("\n## ")[0]
        rows = re.findall(r"^\| (.*) \|$", part, re.MULTILINE)
        return [row.replace("`", "") for row in rows if row.endswith(".")]

    def test_sentences_are_those_of_the_page(self):
        code = ("k = 1\nwhile k <= probe_count()\n  print(probe_promise(k))\n  k += 1\nend")
        printed = self.script(code)
        self.assertEqual(printed.splitlines(), self.sentences())

    def script(self, code, status=0):
        ended = subprocess.run([hvm, "--module", probe, "-e", code], capture_output=True, text=True, env=ENVIRONMENT)
        self.assertEqual(ended.returncode, status, ended.stderr)
        return ended.stdout if status == 0 else ended.stderr

    def test_scripts_ask_for_each_promise(self):
        self.assertIn(" 0 broken, 0 not checked\n", self.script("print(probe_summary())"))
        self.assertEqual(self.script("print(probe_broken(), probe_verdict(1), probe_verdict(probe_count()))"),
                         "0 kept kept\n")
        for call in ("probe_promise(0)", "probe_verdict(probe_count() + 1)", "probe_verdict()", "probe_promise(-1)",
                     'probe_promise("a")'):
            self.assertIn("fail", self.script(call, status=1), call)

    def test_calls_are_answered_as_the_page_says(self):
        page = (PAGE.parent / "probe.md").read_text()
        rows = re.findall(r"^\| `([^`]+)`(?:, then `([^`]+)`)? \| `([^`]+)` \|$", page, re.MULTILINE)
        self.assertEqual(len(rows), 8)
        for call, then, expected in rows:
            code = f"{call}\nprint({then})" if then else f"print({call})"
            self.assertEqual(self.script(f"o = probe_object()\n{code}"), expected + "\n", call)

    def test_verdict_of_a_broken_promise_has_the_finding(self):
        ended = subprocess.run([hvm, "--module", probe, "-e", "print(probe_broken(), probe_verdict(15))"],
                               capture_output=True, text=True,
                               env={**ENVIRONMENT, "LD_PRELOAD": str(mutants), "MUTANT": "truth is the low byte"})
        self.assertEqual(ended.stdout, "1 broken: HVM_AsBool is false for number 2 of tag 0\n", ended.stderr)

    def test_every_fault_is_found_and_breaks_these_promises(self):
        def found(fault):
            limit = {"ARRAYFOLD_PROBE_SECONDS": 1} if "forever" in fault else {}
            return self.summary(LD_PRELOAD=mutants, MUTANT=fault, **limit)

        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            for fault, summary in zip(FAULTS, pool.map(found, FAULTS)):
                with self.subTest(fault):
                    self.assert_broken(summary, FAULTS[fault])

    def test_every_fault_of_the_library_is_tried(self):
        named = re.findall(r'\bis\("([^"]+)"\)', (project / "tests" / "probe" / "mutants.cpp").read_text())
        self.assertEqual(set(named), set(FAULTS))

    def test_every_promise_is_broken_by_a_test(self):
        beginnings = [*sum(FAULTS.values(), []), *(gap[3] for gap in GAPS.values()), *ELSEWHERE]
        self.assertEqual([line for line in self.sentences() if not line.startswith(tuple(beginnings))], [])

    def test_library_before_the_host_has_no_fault_by_itself(self):
        self.assertEqual(self.summary(LD_PRELOAD=mutants).broken, {})

    def place(self, name, old, new):
        """A folder with the probe and copies of both libraries, where `old` is another name in one of them."""
        shutil.copy(probe, self.folder)
        for library in ("libHVMkrnl.so", "libHVMInterp.so"):
            data = (probe.parent / library).read_bytes()
            if library == name:
                self.assertIn(b"\0" + old + b"\0", data)
                data = data.replace(b"\0" + old + b"\0", b"\0" + new + b"\0")
            (self.folder / library).write_bytes(data)
        return self.folder / probe.name

    @unittest.skipIf(SANITIZED, CANNOT_LACK)
    def test_missing_operation_is_named(self):
        for operation in MISSING:
            with self.subTest(operation):
                other = operation[:-1] + "_"
                moved = self.place("libHVMkrnl.so", operation.encode(), other.encode())
                summary = self.summary(moved, LD_LIBRARY_PATH=self.folder)
                self.assertEqual(summary.broken, {OPERATIONS_EXIST: f"the host lacks {operation}"})
                self.assertLessEqual(set(summary.unchecked.values()),
                                     {f"the host has no {operation}", "HVM_NewAny makes no object",
                                      f"there is no type: the host has no {operation}"})
                needed = operation not in ("HVM_FreeMatrix", "HVM_DelStrm")
                self.assertEqual(len(summary.unchecked) > 0, needed)

    @unittest.skipIf(SANITIZED, CANNOT_LACK)
    def test_summary_on_the_page_of_the_probe_is_that_of_a_host_without_an_operation(self):
        moved = self.place("libHVMkrnl.so", b"HVM_NewHash", b"HVM_NewHas_")
        shown = re.search(r"^```text\n(.*?)^```", (PAGE.parent / "probe.md").read_text(), re.MULTILINE | re.DOTALL)
        self.assertEqual(self.report(moved, LD_LIBRARY_PATH=self.folder), shown.group(1))

    def test_other_version_node_is_named(self):
        moved = self.place("libHVMInterp.so", b"HVMINTERP_1", b"HVMINTERP_2")
        summary = self.summary(moved, LD_LIBRARY_PATH=self.folder)
        self.assertEqual(summary.broken, {"lgamma and erf have the version HVMINTERP_1.":
                                          "libHVMInterp.so has no erf of version HVMINTERP_1"})

    def test_library_without_versions_is_named(self):
        summary = self.summary(LD_LIBRARY_PATH=f"{unversioned}:{probe.parent}")
        finding = summary.broken["lgamma and erf have the version HVMINTERP_1."]
        # A library that asks others for versions, as with sanitizers, is found to lack this one.
        self.assertEqual(finding, "libHVMInterp.so has no erf of version HVMINTERP_1" if SANITIZED else
                         "libHVMInterp.so has no version node at all")

    def test_function_with_a_wrong_value_is_named(self):
        source = self.folder / "interp.c"
        script = project / "refhost" / "interp" / "hvminterp.map"
        for lgamma, erf, finding in WRONG_VALUES:
            with self.subTest(finding):
                source.write_text(f"#include <math.h>\ndouble lgamma(double x) {{ return {lgamma}; }}\n"
                                  f"double erf(double x) {{ return {erf}; }}\n")
                ended = subprocess.run([compiler, "-std=c11", "-shared", "-fPIC", source, "-lm",
                                        f"-Wl,--version-script={script}", "-o", self.folder / "libHVMInterp.so"],
                                       capture_output=True, text=True)
                self.assertEqual(ended.returncode, 0, ended.stderr)
                summary = self.summary(LD_LIBRARY_PATH=f"{self.folder}:{probe.parent}")
                self.assertEqual(summary.broken,
                                 {"lgamma and erf have the values of the C library's functions.": finding})

    def test_missing_libraries_are_named(self):
        shutil.copy(probe, self.folder)
        ended = subprocess.run([probe_host, self.folder / probe.name], capture_output=True, text=True,
                               env={**ENVIRONMENT, "LD_LIBRARY_PATH": ""})
        # The host takes no answer, so the summary goes to the standard error.
        self.assertEqual(ended.returncode, 4, ended.stderr)
        summary = Summary(ended.stderr)
        self.assertIn("libHVMkrnl.so: cannot open shared object file",
                      summary.broken["libHVMkrnl.so and libHVMInterp.so are found by these names."])
        self.assertIn("the host lacks HVM_AnyCheck HVM_GetAny", summary.broken[OPERATIONS_EXIST])

    def test_library_that_is_cut_off_is_named(self):
        shutil.copy(probe, self.folder)
        whole = {name: (probe.parent / name).read_bytes() for name in ("libHVMkrnl.so", "libHVMInterp.so")}
        for name in whole:
            # Notes for debuggers may be more than half of a library, and are not loaded.
            for share in (0, 0.01, 0.1, 0.25):
                with self.subTest(name, share=share):
                    for library, data in whole.items():
                        size = int(len(data) * share) if library == name else len(data)
                        (self.folder / library).write_bytes(data[:size])
                    ended = subprocess.run([probe_host, self.folder / probe.name], capture_output=True, text=True,
                                           env={**ENVIRONMENT, "LD_LIBRARY_PATH": str(self.folder)})
                    # Without operations, the host takes no answer, and the summary goes to the standard error.
                    self.assertEqual(ended.returncode, 4 if name == "libHVMkrnl.so" else 0, ended.stderr)
                    summary = Summary(ended.stderr if ended.returncode == 4 else ended.stdout)
                    self.assertIn(name, summary.broken["libHVMkrnl.so and libHVMInterp.so are found by these names."])

    def example_with(self, old, new):
        """A folder with a libHVMkrnl.so of the example's sources, one of whose records is changed."""
        source = project / "examples" / "embedding"
        header = (source / "host.h").read_text()
        self.assertIn(old, header)
        header = re.sub(r"^_Static_assert.*\n", "", header.replace(old, new), flags=re.MULTILINE)
        kernel = re.sub(r"UNSERVED\(HVM_Set(Int|Real)\)", "", (source / "kernel.c").read_text()) + SETTERS
        (self.folder / "host.h").write_text(header)
        (self.folder / "kernel.c").write_text(kernel)
        ended = subprocess.run([compiler, "-std=c11", "-shared", "-fPIC", self.folder / "kernel.c", "-o",
                                self.folder / "libHVMkrnl.so"], capture_output=True, text=True)
        self.assertEqual(ended.returncode, 0, ended.stderr)
        return self.folder

    def test_record_with_a_field_elsewhere_is_named(self):
        whole = self.summary(LD_LIBRARY_PATH=self.example_with("uint8_t tag;", "uint8_t tag;"))
        for record, (old, new, offset, sentence, finding) in GAPS.items():
            with self.subTest(record):
                summary = self.summary(probe, offset, LD_LIBRARY_PATH=self.example_with(old, new))
                news = {promise: text for promise, text in summary.broken.items() if promise not in whole.broken}
                self.assertEqual([text for promise, text in news.items() if promise.startswith(sentence)], [finding])

    def test_argument_that_leads_nowhere_is_answered(self):
        ended = subprocess.run([probe_host, probe, "1", "wrong"], capture_output=True, text=True, env=ENVIRONMENT)
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertEqual(ended.stdout.splitlines()[-1],
                         "broken: the process ended in or after HVM_AsString: signal 11, Segmentation fault")

    def test_context_without_a_frame_is_named(self):
        ended = subprocess.run([probe_host, probe, "1", "bare"], capture_output=True, text=True, env=ENVIRONMENT)
        self.assertEqual(ended.returncode, 0, ended.stderr)
        self.assertEqual(Summary(ended.stdout).broken,
                         {"The frame, call_function and read_slot of a context are not null.":
                          "`frame`, at offset 56, is null"})

    def test_operations_that_end_the_process_are_named(self):
        summary = self.summary(LD_LIBRARY_PATH=embedding)
        self.assertEqual(summary.broken["HVM_AsBool is false for zero, and true for other numbers."],
                         "the process ended in or after HVM_AsBool: signal 6, Aborted")
        self.assertEqual(sum(summary.counts[1:]), summary.counts[0])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
