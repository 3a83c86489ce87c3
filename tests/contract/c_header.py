# tests/contract/c_header.py: the contract in C says what the contract in C++ says
#
# Usage: c_header.py PROJECT_DIRECTORY MODULE C_COMPILER CXX_COMPILER
#
# Records, constants and functions are read from the C++ headers. Programs, one for each language, print what the
# compiler makes of them. GCC and clang compile the C header, as C11 and as C++, with warnings as errors.

import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

project, module = map(pathlib.Path, sys.argv[1:3])
c_compilers = {sys.argv[3], *filter(shutil.which, ("gcc", "clang-14"))}
cxx_compilers = {sys.argv[4], *filter(shutil.which, ("g++", "clang++-14"))}

HEADER = project / "include" / "arrayfold" / "host.h"
HOST = project / "plugin" / "host"
CXX_CONTRACT = (HOST / "host_value.hpp").read_text() + (HOST / "host_operations.hpp").read_text()
WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wshadow", "-Werror"]
C11 = ["-std=c11", *WARNINGS]
CXX17 = ["-std=c++17", *WARNINGS]
PREFIXES = {"ValueTag": "HOST_TAG_", "Lifetime": "HOST_LIFETIME_", "SlotTag": "HOST_SLOT_", "NodeKind": "HOST_NODE_",
            "Opcode": "HOST_OPCODE_"}
# The names of types beside the records.
TYPES = ["HostContext", "HostBool", "EntryFunction", "RegisterFunctions", "PackageInit", "CreateCallback",
         "DestroyCallback", "MethodCallback", "OperatorCallback"]

C_PROGRAM = """#include "arrayfold/host.h"
#include <math.h>
#include <stdio.h>
int main(void) {{
{statements}
  return 0;
}}
"""
CXX_PROGRAM = """{includes}
#include <cstdio>
#include <cxxabi.h>
#include <string>
#include <typeinfo>
static void type(const char* name, const std::type_info& info) {{
  const std::string text = abi::__cxa_demangle(info.name(), nullptr, nullptr, nullptr);
  std::printf("%s %s\\n", name, text.c_str());
}}
{using}
int main() {{
{statements}
}}
"""
CXX_INCLUDES = '#include "host/host_operations.hpp"\n#include "host/host_value.hpp"'


def records():
    """The records of the C++ headers and their fields."""
    found = {}
    for name, body in re.findall(r"^struct (\w+) \{\n(.*?)^\};", CXX_CONTRACT, re.MULTILINE | re.DOTALL):
        fields = [re.search(r"(\w+)(\[\w+\])?;$", line.split("//")[0].rstrip()).group(1)
                  for line in body.splitlines() if line.strip() and "using" not in line]
        found[name] = fields
    return found


def enumerations():
    """The enumerations of the C++ headers and their enumerators."""
    return {name: re.findall(r"^  (\w+) = \d+,", body, re.MULTILINE)
            for name, body in re.findall(r"^enum class (\w+) : [\w:]+ \{\n(.*?)^\};", CXX_CONTRACT,
                                         re.MULTILINE | re.DOTALL)}


def functions():
    return re.findall(r"^[\w:]+[ \w:*]*?[ *](HVM_\w+|lgamma|erf)\(", CXX_CONTRACT, re.MULTILINE)


def layout():
    """Statements that print sizes and offsets. They are the same in both languages."""
    for record, fields in records().items():
        yield f'  printf("{record} %zu\\n", sizeof({record}));'
        for field in fields:
            at = f"offsetof({record}, {field}), sizeof((({record}*)0)->{field})"
            yield f'  printf("{record}.{field} %zu %zu\\n", {at});'


def constants(spelled):
    for kind, names in enumerations().items():
        yield from (f'  printf("{kind} {name} %d\\n", (int){spelled(kind, name)});' for name in names)


def in_c(kind, name):
    return PREFIXES[kind] + name.upper()


def references(includes, using=""):
    """A source that refers to each function, and to nothing else."""
    entries = ",\n".join(f"  (void (*)(void)){name}" for name in functions())
    return f"{includes}\n{using}\nvoid (*table[])(void) = {{\n{entries}}};\n"


def c_program():
    return C_PROGRAM.format(statements="\n".join([*layout(), *constants(in_c)]))


def cxx_program(includes, using, spelled):
    types = [f'  type("{name}", typeid({name}));' for name in functions() + TYPES]
    statements = [*layout(), *constants(spelled), *types]
    return CXX_PROGRAM.format(includes=includes, using=using, statements="\n".join(statements))


class InC(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        workplace = tempfile.TemporaryDirectory()
        self.addCleanup(workplace.cleanup)
        self.folder = pathlib.Path(workplace.name)

    def compiled(self, compiler, text, suffix, *words):
        source = self.folder / f"source{suffix}"
        source.write_text(text)
        program = self.folder / "program"
        ended = subprocess.run([compiler, *words, f"-I{project / 'include'}", f"-I{project / 'plugin'}", source, "-o",
                                program], capture_output=True, text=True)
        self.assertEqual(ended.returncode, 0, f"{compiler} {words}\n{ended.stderr}")
        return program

    def printed(self, *words):
        return subprocess.run([self.compiled(*words)], capture_output=True, text=True, check=True).stdout.splitlines()

    def symbols(self, *words):
        """The symbols that an object lacks."""
        lines = subprocess.run(["nm", "-u", self.compiled(*words, "-c")], capture_output=True, text=True, check=True)
        return set(re.findall(r"U (\S+)", lines.stdout))

    def facts(self):
        using = "using namespace arrayfold;"
        program = cxx_program(CXX_INCLUDES, using, lambda kind, name: f"{kind}::{name}")
        # Two records of the C++ headers have no standard layout, where compilers warn of offsetof.
        lines = self.printed(sys.argv[4], program, ".cpp", "-std=c++17", "-Wno-invalid-offsetof")
        return [line.replace("arrayfold::", "") for line in lines]

    def test_records_and_constants_are_those_of_the_headers_in_cxx(self):
        facts = [line for line in self.facts() if "(" not in line and line.split()[0] not in TYPES]
        self.assertGreater(len(facts), 100)
        for compiler in c_compilers:
            with self.subTest(compiler):
                self.assertEqual(self.printed(compiler, c_program(), ".c", *C11), facts)

    def test_functions_and_callbacks_have_the_types_of_the_headers_in_cxx(self):
        facts = self.facts()
        program = cxx_program('#include "arrayfold/host.h"', "", in_c)
        for compiler in cxx_compilers:
            with self.subTest(compiler):
                self.assertEqual(self.printed(compiler, program, ".cpp", *CXX17), facts)

    def test_symbols_are_those_of_the_headers_in_cxx(self):
        expected = set(functions())
        self.assertEqual(len(expected), 46)
        reference = references(CXX_INCLUDES, "using namespace arrayfold;")
        self.assertEqual(self.symbols(sys.argv[4], reference, ".cpp", "-std=c++17"), expected)
        text = references('#include "arrayfold/host.h"')
        for compiler in c_compilers:
            self.assertEqual(self.symbols(compiler, text, ".c", *C11), expected, compiler)
        for compiler in cxx_compilers:
            self.assertEqual(self.symbols(compiler, text, ".cpp", *CXX17), expected, compiler)

    def test_nothing_but_the_contract_is_in_the_header(self):
        text = HEADER.read_text()
        listed = re.findall(r"\b(?:USED|UNUSED)\((HVM_\w+)\)", text)
        self.assertEqual(sorted(listed), sorted(set(functions()) - {"lgamma", "erf"}))
        constants_of_header = re.findall(r"^  (HOST_\w+) = \d+,?", text, re.MULTILINE)
        expected = [in_c(kind, name) for kind, names in enumerations().items() for name in names]
        self.assertEqual(sorted(constants_of_header), sorted(expected))
        structures = set(re.findall(r"^(?:typedef )?struct (?:HOST_PACKED )?(\w+) \{", text, re.MULTILINE))
        self.assertEqual(structures, set(records()))

    def test_operations_that_the_module_imports_are_marked(self):
        used = set(re.findall(r"\bUSED\((HVM_\w+)\)", HEADER.read_text()))
        lines = subprocess.run(["nm", "-D", "--undefined-only", module], capture_output=True, text=True, check=True)
        imported = set(re.findall(r"U (HVM_\w+|\w+@HVMINTERP_1)", lines.stdout))
        self.assertEqual(imported, used | {"lgamma@HVMINTERP_1", "erf@HVMINTERP_1"})
        for page in (HEADER, project / "docs" / "host-contract.md"):
            self.assertTrue(f"{len(imported)} of the 46" in " ".join(page.read_text().split()), page)

    def test_drawing_of_the_index_list_is_that_of_the_page(self):
        page = (project / "docs" / "host-contract.md").read_text()
        drawing = re.search(r"^```text\n(.*packed_size.*?)```", page, re.MULTILINE | re.DOTALL).group(1)
        self.assertIn("".join(f" *   {line}".rstrip() + "\n" for line in drawing.splitlines()), HEADER.read_text())


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
