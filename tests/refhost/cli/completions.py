# refhost/cli/completions.py: shells complete the command lines of hvm
#
# The shells run at terminals of their own, where the test types and presses Tab.
#
# Usage: completions.py HVM MODULE FILE_FOR_BASH FILE_FOR_ZSH

import os
import pty
import re
import select
import subprocess
import sys
import tempfile
import time
import unittest

HVM, MODULE, BASH_FILE, ZSH_FILE = sys.argv[1:]
SECONDS = 20
PROMPT = "READY> "


def hvm(*arguments):
    return subprocess.run([HVM, *arguments], capture_output=True, text=True, check=True).stdout


def contents(path):
    with open(path) as file:
        return file.read()


def options_of_help():
    """Every spelling of an option in --help, and of those that take a value the value's name."""
    spellings = {}
    for line in hvm("--help").splitlines():
        row = re.match(r"  (?:    |(-\w)(?:, )?)(--[\w-]+)?(?: ([A-Z]+))?(?:  |$)", line)
        for spelling in row.groups()[:2] if row else ():
            if spelling:
                spellings[spelling] = row[3]
    return spellings


class Files(unittest.TestCase):
    def test_are_those_that_hvm_writes(self):
        self.assertEqual(contents(BASH_FILE), hvm("--completion", "bash"))
        self.assertEqual(contents(ZSH_FILE), hvm("--completion", "zsh"))

    def test_name_every_option_of_help_and_no_other(self):
        spellings = options_of_help()
        self.assertGreater(len(spellings), 12)
        cases = re.findall(r"echo '(.*)'", contents(BASH_FILE))
        self.assertEqual({word for case in cases for word in case.split()}, set(spellings))
        rows = re.findall(r"^    +'\(.*?\)(-[\w-]+)[+=]?\[.*?\](?::([A-Z]+):)?", contents(ZSH_FILE), re.MULTILINE)
        self.assertEqual({spelling: value or None for spelling, value in rows}, spellings)


class Shell:
    """A shell at a terminal. `hvm` is a function that shows its arguments, `real` runs hvm itself."""

    def __init__(self, command, environment, folder):
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(command[0], command, {**os.environ, "TERM": "dumb", **environment})
        self.shown = ""
        self.wait_for(PROMPT)

    def end(self):
        os.close(self.terminal)
        os.kill(self.process, 9)
        os.waitpid(self.process, 0)

    def wait_for(self, text):
        """What the terminal shows up to `text`."""
        end = time.monotonic() + SECONDS
        while text not in self.shown:
            if not select.select([self.terminal], [], [], max(0, end - time.monotonic()))[0]:
                raise AssertionError(f"waited for {text!r}, but the terminal shows {self.shown!r}")
            self.shown += os.read(self.terminal, 4096).decode(errors="replace")
        before, self.shown = self.shown.split(text, 1)
        return before

    def arguments(self, typed):
        """The arguments of hvm when this is typed behind it."""
        os.write(self.terminal, f"hvm {typed}\n".encode())
        self.wait_for("@[")
        shown = self.wait_for("]@")
        self.wait_for(PROMPT)
        return re.findall("<(.*?)>", shown)


class Completion:
    """What both shells complete. `shell` is one."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = temporary.name
        for name in ["script one.hvm", "scripture.txt", "numbers.csv", "tests/deep.hvm", "tests/data.csv"]:
            path = os.path.join(self.folder, name)
            os.makedirs(os.path.dirname(path), exist_ok=True)
            open(path, "w").close()
        self.rc = f"""
            PS1='{PROMPT}'
            hvm() {{
              if [ "$1" = --list ] && [ $# = 1 ]; then
                '{HVM}' --module '{MODULE}' --list
              else
                printf '@['; printf '<%s>' "$@"; printf ']@\\n'
              fi
            }}
        """
        self.shell = self.start()
        self.addCleanup(self.shell.end)

    def expect(self, *cases):
        for typed, arguments in cases:
            with self.subTest(typed):
                self.assertEqual(self.shell.arguments(typed), arguments)

    def value(self, option, value):
        """An option whose name is completed, and its value."""
        return [option, value]

    def test_of_options(self):
        self.expect(("--unch\tx", ["--unchecked", "x"]),
                    ("--vers\t", ["--version"]),
                    ("--test --jo\t3", ["--test", *self.value("--jobs", "3")]),
                    ("--test tests --fi\tx", ["--test", "tests", *self.value("--filter", "x")]))

    def test_of_options_that_have_no_meaning_there(self):
        self.expect(("--jo\t3", ["--jo3"]),
                    ("--list --leak\tx", ["--list", "--leakx"]),
                    ("-- --vers\t", ["--", "--vers"]),
                    ("x.hvm --vers\t", ["x.hvm", "--vers"]))

    def test_of_values(self):
        self.expect(("--completion z\t", ["--completion", "zsh"]),
                    ("--completion=b\t", ["--completion=bash"]),
                    ("--warnings e\tx", ["--warnings", "error", "x"]),
                    ("--module num\t-e x", ["--module", "numbers.csv", "-e", "x"]),
                    ("--module=num\t-e x", ["--module=numbers.csv", "-e", "x"]),
                    ("--test --junit num\t", ["--test", "--junit", "numbers.csv"]),
                    ("-e num\t", ["-e", "num"]),
                    ("--test --filter num\t", ["--test", "--filter", "num"]))

    def test_of_scripts_and_their_arguments(self):
        self.expect(("scr\t", ["script one.hvm"]),
                    ("--leaks scr\t", ["--leaks", "script one.hvm"]),
                    ("-- scr\t", ["--", "script one.hvm"]),
                    ("x.hvm num\t", ["x.hvm", "numbers.csv"]),
                    ("-e 1 num\t", ["-e", "1", "numbers.csv"]))

    def test_of_tests(self):
        self.expect(("--test te\td\t", ["--test", "tests/deep.hvm"]),
                    ("--test tests/ scr\t", ["--test", "tests/", "script one.hvm"]))

    def test_of_functions(self):
        self.expect(("--list toy_int\tx", ["--list", "toy_int", "x"]),
                    ("--list toy_int toy_serve\tx", ["--list", "toy_int", "toy_serve_elements", "x"]))


class Bash(Completion, unittest.TestCase):
    def start(self):
        rc = os.path.join(self.folder, ".rc")
        with open(rc, "w") as file:
            file.write(f"bind 'set bell-style none'\nbind 'set enable-bracketed-paste off'\nsource '{BASH_FILE}'\n"
                       f"{self.rc}\n")
        return Shell(["bash", "--noprofile", "--rcfile", rc, "-i"], {}, self.folder)

    def test_of_files_that_are_no_scripts(self):
        self.expect(("num\t", ["num"]), ("--test num\t", ["--test", "num"]))


class Zsh(Completion, unittest.TestCase):
    def start(self):
        with open(os.path.join(self.folder, ".zshrc"), "w") as file:
            file.write(f"fpath=('{os.path.dirname(ZSH_FILE)}' $fpath)\nautoload -Uz compinit && compinit -u -D\n"
                       f"setopt no_beep\n{self.rc}\n")
        return Shell(["zsh", "-d", "-i"], {"ZDOTDIR": self.folder}, self.folder)

    def value(self, option, value):
        return [f"{option}={value}"]

    def test_of_files_that_are_no_scripts(self):
        """zsh offers them where no script fits."""
        self.expect(("num\t", ["numbers.csv"]), ("--test num\t", ["--test", "numbers.csv"]))


unittest.main(argv=sys.argv[:1])
