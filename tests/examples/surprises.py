# tests/examples/surprises.py: what examples/surprises.hvm prints, its warnings among it
#
# Usage: surprises.py HVM MODULE PROJECT_DIRECTORY [--write]
#
# The output is that of surprises.txt, and names every warning that hvm lists. --write writes the file anew.

import difflib
import pathlib
import subprocess
import sys


def main(hvm, module, project, *options):
    project = pathlib.Path(project)
    path = project / "tests/examples/surprises.txt"
    run = subprocess.run([hvm, "--module", module, "examples/surprises.hvm"], cwd=project, stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT, text=True, check=False)
    if "--write" in options:
        path.write_text(run.stdout)
    rows = subprocess.run([hvm, "--module", module, "--list-warnings"], stdout=subprocess.PIPE, text=True, check=True)
    names = [row.split()[0] for row in rows.stdout.splitlines()]
    faults = [f"{name} does not come" for name in names if f"# allow: {name}\n" not in run.stdout]
    faults += difflib.unified_diff(path.read_text().splitlines(), run.stdout.splitlines(), "expected", "printed",
                                   lineterm="")
    if run.returncode != 0 or len(names) < 20:
        faults.append(f"hvm ended with {run.returncode} and lists {len(names)} warnings")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
