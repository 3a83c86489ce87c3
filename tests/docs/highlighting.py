# tests/docs/highlighting.py: the lexer for Pygments and the grammar for editors know the words of the language
#
# Usage: highlighting.py PROJECT_DIRECTORY LIST_WORDS FUNCTIONS_JSON [--write]
#
# LIST_WORDS prints the keywords and built-in functions of hvm. FUNCTIONS_JSON describes the functions of the module.
# words.json must hold these words, and hvm.tmLanguage.json must be what the words and the rules of hvm_lexer.py give;
# --write writes both. In all scripts of the project no character may be unknown to the lexer, and the grammar must see
# the same.

import importlib
import itertools
import json
import pathlib
import re
import subprocess
import sys

import extract_blocks
import function_pages

FOLDER = "share/hvm/highlighting"
CONSTANTS = ["false", "nil", "true"]
LOGIC = ["and", "not", "or"]
KINDS = ["bool", "double", "int", "int64"]
SCOPES = {
    "comment": "comment.line.number-sign",
    "string": "string.quoted.double",
    "escape": "constant.character.escape",
    "real": "constant.numeric.float",
    "integer": "constant.numeric.integer",
    "kind": "storage.type",
    "definition": "entity.name.function",
    "method": "support.function.method",
    "constant": "constant.language",
    "logic": "keyword.operator.logical",
    "keyword": "keyword.control",
    "builtin": "support.function.builtin",
    "module": "support.function.module",
    "library": "support.function.library",
    "name": "variable.other",
    "quotation": "keyword.operator.quotation",
    "operator": "keyword.operator",
    "punctuation": "punctuation",
}


def words_of(keywords, builtins, description, library):
    """The groups of words. Where two groups have a word, the rules of the lexer take the first group."""
    functions = [entry["name"] for entry in description["functions"]]
    return {
        "constant": CONSTANTS,
        "logic": LOGIC,
        "keyword": sorted(set(keywords) - set(CONSTANTS) - set(LOGIC)),
        "kind": KINDS,
        "builtin": sorted(builtins),
        "module": sorted(functions),
        "library": sorted(function_pages.FN.findall(library)),
        "method": sorted(entry["name"] for entry in description["methods"]),
    }


def text_of_words(words):
    lines = [f"  {json.dumps(group)}: {json.dumps(names)}" for group, names in words.items()]
    return "{\n" + ",\n".join(lines) + "\n}\n"


def lexer_in(folder):
    """The module of the lexer, with the words that its folder has now."""
    sys.path.insert(0, str(folder))
    try:
        sys.modules.pop("hvm_lexer", None)
        return importlib.import_module("hvm_lexer")
    finally:
        sys.path.remove(str(folder))


def grammar_of(lexer):
    begin, escape, end = lexer.STRING
    string = {
        "name": f"{SCOPES['string']}.hvm", "begin": begin, "end": end,
        "patterns": [{"name": f"{SCOPES['escape']}.hvm", "match": escape}],
    }
    rules = [{"name": f"{SCOPES[category]}.hvm", "match": pattern} for category, pattern in lexer.RULES]
    return {"name": "hvm", "scopeName": "source.hvm", "fileTypes": ["hvm"], "patterns": [string] + rules}


def text_of_grammar(lexer):
    return json.dumps(grammar_of(lexer), indent=2) + "\n"


def seen_by_grammar(grammar, line):
    """What a grammar sees in a line, as an editor reads it: pairs of text and scope, without blanks."""
    rules = [(re.compile(rule.get("match") or rule["begin"]), rule) for rule in grammar["patterns"]]
    at = 0
    while at < len(line):
        matches = [(found, rule) for pattern, rule in rules if (found := pattern.search(line, at)) and found.group()]
        if not matches:
            break
        found, rule = min(matches, key=lambda match: match[0].start())
        if skipped := line[at:found.start()].strip():
            yield skipped, ""
        end = found.end()
        if "begin" in rule:
            escape = rule["patterns"][0]
            step = re.compile(f"({escape['match']})|({rule['end']})")
            piece = found.start()
            while (stop := step.search(line, end)) and stop.group(1):
                yield line[piece:stop.start()], rule["name"]
                yield stop.group(), escape["name"]
                piece = end = stop.end()
            end = stop.end()
            yield line[piece:end], rule["name"]
        else:
            yield found.group(), rule["name"]
        at = end


def seen_by_lexer(lexer, line):
    """What the lexer sees in a line: pairs of text and token, without blanks."""
    tokens = lexer.HvmLexer(ensurenl=False, stripall=True).get_tokens(line)
    return [(text, str(kind)) for kind, text in tokens if str(kind) != "Token.Text"]


def joined(pieces):
    """Neighbours of one kind as one piece."""
    result = []
    for text, kind in pieces:
        if result and result[-1][1] == kind:
            result[-1] = (result[-1][0] + text, kind)
        elif text:
            result.append((text, kind))
    return result


def fault_of_line(lexer, grammar, line):
    """What is wrong with the way in which a line is seen, or nothing."""
    by_lexer = seen_by_lexer(lexer, line)
    for text, kind in by_lexer:
        if kind == "Token.Error":
            return f"the lexer does not know {text!r}"
    tokens = {f"{scope}.hvm": str(lexer.TOKENS[category]) for category, scope in SCOPES.items()}
    by_grammar = [(text, tokens.get(scope, "nothing")) for text, scope in seen_by_grammar(grammar, line)]
    for ours, theirs in itertools.zip_longest(joined(by_lexer), joined(by_grammar), fillvalue=("", "nothing")):
        if ours != theirs:
            return f"the lexer sees {ours[0]!r} as {ours[1]}, and the grammar {theirs[0]!r} as {theirs[1]}"
    return ""


def scripts_of(project):
    """All lines of scripts, with their places."""
    for folder in ("examples", "tests/scripts", "refhost/script/library"):
        for path in sorted((project / folder).rglob("*.hvm")):
            for number, line in enumerate(path.read_text(errors="replace").splitlines(), start=1):
                yield f"{path}:{number}", line
    for page in extract_blocks.pages_of(project):
        for block in extract_blocks.blocks_of(page.read_text()):
            if block.language == "hvm":
                for number, line in enumerate(block.lines, start=block.line):
                    yield f"{page}:{number}", line


def main(project, list_words, description, *options):
    project = pathlib.Path(project)
    folder = project / FOLDER
    spoken = json.loads(subprocess.run([list_words], stdout=subprocess.PIPE, text=True, check=True).stdout)
    words = text_of_words(words_of(spoken["keywords"], spoken["builtins"],
                                   json.loads(pathlib.Path(description).read_text()),
                                   (project / "refhost/script/library/arrays.hvm").read_text()))
    if "--write" in options:
        (folder / "words.json").write_text(words)
        (folder / "hvm.tmLanguage.json").write_text(text_of_grammar(lexer_in(folder)))
        return 0
    faults = []
    if (folder / "words.json").read_text() != words:
        faults.append(f"{folder / 'words.json'}:1: the words are not those of hvm; run this with --write")
    lexer = lexer_in(folder)
    if (folder / "hvm.tmLanguage.json").read_text() != text_of_grammar(lexer):
        faults.append(f"{folder / 'hvm.tmLanguage.json'}:1: is not up to date; run this with --write")
    grammar = grammar_of(lexer)
    lines = list(scripts_of(project))
    seen = {line: fault_of_line(lexer, grammar, line) for line in {line for _, line in lines}}
    faults += [f"{place}: {seen[line]}" for place, line in lines if seen[line]]
    print("\n".join(faults) or f"lexer and grammar know the words, and see the same in {len(lines)} lines")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
