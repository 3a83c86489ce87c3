# hvm_lexer.py: scripts of hvm in colours, for Pygments and all that uses it
#
# Pygments finds the lexer under the name hvm when this folder is on PYTHONPATH:
#
#   PYTHONPATH=/usr/share/hvm/highlighting pygmentize -l hvm script.hvm
#
# words.json holds the words of the language. The rules below make both this lexer and hvm.tmLanguage.json, the grammar
# for editors, of them.

import json
import pathlib
import re

from pygments import token
from pygments.lexer import RegexLexer

WORDS = json.loads((pathlib.Path(__file__).parent / "words.json").read_text())


def words(group):
    return r"\b(?:" + "|".join(map(re.escape, WORDS[group])) + r")\b"


# A string: its begin, an escape within it, and its end. It ends with its line at the latest.
STRING = (r'\bw"|"', r'\\(?:[ntr0\\"]|x[0-9A-Fa-f]{2}|u\{[0-9A-Fa-f]+\})', r'"|$')

# What else there is, as categories and patterns. At each place the first match counts.
RULES = [
    ("comment", r"#.*"),
    ("real", r"\b\d+(?:\.\d+(?:[eE][+-]?\d+)?|[eE][+-]?\d+)\b"),
    ("integer", r"\b\d+L?\b"),
    ("kind", r"@(?:" + "|".join(WORDS["kind"]) + r")\b"),
    ("definition", r"(?<=\bfn )[A-Za-z_]\w*"),
    ("method", r"(?<=\.)(?:" + "|".join(WORDS["method"]) + r")(?=\()"),
    ("constant", words("constant")),
    ("logic", words("logic")),
    ("keyword", words("keyword")),
    ("builtin", words("builtin")),
    ("module", words("module")),
    ("library", words("library")),
    ("name", r"\b[A-Za-z_]\w*\b"),
    ("quotation", r"@\$?"),
    ("operator", r"[=!<>+\-*/%]=|[-+*/%<>=]"),
    ("punctuation", r"[\[\](),:.;]"),
]

TOKENS = {
    "comment": token.Comment.Single,
    "string": token.String.Double,
    "escape": token.String.Escape,
    "real": token.Number.Float,
    "integer": token.Number.Integer,
    "kind": token.Keyword.Type,
    "definition": token.Name.Function,
    "method": token.Name.Function,
    "constant": token.Keyword.Constant,
    "logic": token.Operator.Word,
    "keyword": token.Keyword,
    "builtin": token.Name.Builtin,
    "module": token.Name.Function,
    "library": token.Name.Function,
    "name": token.Name,
    "quotation": token.Operator,
    "operator": token.Operator,
    "punctuation": token.Punctuation,
}


class HvmLexer(RegexLexer):
    name = "hvm"
    aliases = ["hvm"]
    filenames = ["*.hvm"]
    flags = re.MULTILINE

    begin, escape, end = STRING
    tokens = {
        "root": [(r"\s+", token.Text), (begin, TOKENS["string"], "string")] +
                [(pattern, TOKENS[category]) for category, pattern in RULES],
        "string": [(escape, TOKENS["escape"]), (end, TOKENS["string"], "#pop"), (r'[^"\\\n]+', TOKENS["string"])],
    }
