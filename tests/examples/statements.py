# tests/examples/statements.py: how many statements a script has, in Python and in the language of hvm
#
# In both languages, a block counts as one statement and what it holds as further ones. A line that only ends a block or
# begins its other half (`end`, `else`, `catch`) is none. What gets other code (`import`, `use`) and comments, also the
# documentation strings of Python, do not count.

import ast
import re

TOKEN = re.compile(r'#[^\n]*|w?"(?:\\.|[^"\\\n])*"|\w+(?:\.\d\w*)?|[=!<>+\-*/%]=|\S|\n')
CONTINUES = {"+", "-", "*", "/", "%", "<", ">", "==", "!=", "<=", ">=", "and", "or", ","}


def of_python(text):
    """The statements of a Python program."""
    tree = ast.parse(text)
    documented = [node for node in ast.walk(tree) if isinstance(node, (ast.Module, ast.ClassDef, ast.FunctionDef))]
    descriptions = sum(ast.get_docstring(node) is not None for node in documented)
    counted = [node for node in ast.walk(tree)
               if isinstance(node, ast.stmt) and not isinstance(node, (ast.Import, ast.ImportFrom))]
    return len(counted) - descriptions


def of_hvm(text):
    """The statements of an hvm script: whatever begins behind a line end, `;`, `then`, `do`, `else`, `end`, `try`,
    `catch e` or the parameters of a `fn`, and every `elseif`."""
    count = 0
    depth = 0
    begins = True
    in_head_of_fn = False
    previous = ""
    for token in TOKEN.findall(text):
        if token.startswith("#"):
            continue
        if token in ("\n", ";"):
            begins = begins or depth == 0 and (token == ";" or previous not in CONTINUES)
            continue
        depth += (token in ("(", "[")) - (token in (")", "]"))
        if token in ("then", "do", "else", "end"):
            begins = True
        elif token in ("elseif", "catch"):
            count += token == "elseif"
            begins = False
        elif previous == "catch" or in_head_of_fn and depth == 0 and token == ")":
            begins = True
            in_head_of_fn = False
        elif begins:
            count += token != "use"
            begins = token == "try"
            in_head_of_fn = token == "fn"
        previous = token
    return count
