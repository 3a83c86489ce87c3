# scripts/mutation/mutants.py: the places of a source where it can be changed, and the source with all of them
#
# A mutant is a small change that a test should notice. All mutants of a file are compiled at once: what is changed
# becomes a choice, `(mutation::runs(17) ? (a <= b) : (a < b))`, and the process is told which one it runs.

import re
import zlib

from source import ASSIGNMENTS, BINDS, STATEMENT_WORDS, Source

BOUNDARY = {"<": "<=", "<=": "<", ">": ">=", ">=": ">"}
OPPOSITE = {"<": ">=", "<=": ">", ">": "<=", ">=": "<", "==": "!=", "!=": "=="}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "%": "/", "<<": ">>", ">>": "<<", "&": "|", "|": "&", "^": "&"}
LOGIC = {"&&": "||", "||": "&&"}
ASSIGNED = {"+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "|=": "&=", "&=": "|=", "^=": "|="}
# Functions that take the same arguments.
EXCHANGED = {"Add": "Sub", "Sub": "Add", "Mul": "Add", "Div": "Mul", "Min": "Max", "Max": "Min", "Lt": "Le", "Le": "Lt",
             "Gt": "Ge", "Ge": "Gt", "Eq": "Ne", "Ne": "Eq", "And": "Or", "Or": "And", "Xor": "Or",
             "AllTrue": "AllFalse", "AllFalse": "AllTrue", "InterleaveLower": "InterleaveUpper",
             "InterleaveUpper": "InterleaveLower", "MulAdd": "NegMulAdd", "NegMulAdd": "MulAdd",
             "IfThenZeroElse": "IfThenElseZero", "IfThenElseZero": "IfThenZeroElse", "min": "max", "max": "min",
             "lower_bound": "upper_bound", "upper_bound": "lower_bound", "sum_of": "product_of", "handled": "failed",
             "failed": "handled", "true": "false", "false": "true", "front": "back", "back": "front",
             "begin": "end", "lowest": "max"}
# Arguments that no other can stand for, and functions whose arguments may change places.
FIXED_ARGUMENTS = {"tag", "call", "ctx", "kind", "half", "evaluator", "bytes", "wide"}
IN_ANY_ORDER = {"Add", "Mul", "And", "Or", "Xor", "Eq", "Ne", "offsetof", "lookup", "Set", "BitCast", "LoadU", "Load",
                "min", "max"}
NOT_CALLED = STATEMENT_WORDS | {"catch", "sizeof", "alignof", "decltype", "static_assert", "noexcept", "operator",
                                "defined", "constexpr"}


class Mutant:
    """A change of the characters from `start` to `end`; `form` is a choice between {new} and {old}."""

    def __init__(self, kind, start, end, old, new, form="(mutation::runs({number}) ? ({new}) : ({old}))"):
        self.kind, self.start, self.end, self.old, self.new, self.form = kind, start, end, old, new, form
        self.name = None  # what survivors are listed by
        self.number = None
        self.line = None
        self.around = ""  # the tokens beside a change of one

    def rank(self):
        """Mutants are chosen by this number, so that an edit of a file changes the choice in that place alone."""
        return zlib.crc32(self.name.encode())


class Finder:
    """Finds the mutants of one source."""

    def __init__(self, path, text):
        self.path, self.source, self.mutants = path, Source(text), []
        self.tokens = self.source.tokens

    def find(self):
        for index, token in enumerate(self.tokens):
            if token.is_constant:
                continue
            self.find_values(index)
            if token.in_function:
                self.find_operators(index)
                self.find_conditions(index)
                self.find_calls(index)
                self.find_statements(index)
        self.give_names()
        return self.mutants

    def slice(self, first, last, replaced=None, by=None):
        """The text of some tokens, in one line and without comments, one token replaced."""
        texts, end = [], None
        for index in range(first, last + 1):
            token = self.tokens[index]
            if end is not None and token.start > end:
                texts.append(" ")
            texts.append(by if index == replaced else token.text)
            end = token.end
        return "".join(texts)

    def add(self, kind, first, last, new, old=None, **form):
        start, end = self.tokens[first].start, self.tokens[last].end
        if re.search(r"\n *#", self.source.text[start:end]):
            return  # a directive cannot stand in a choice
        mutant = Mutant(kind, start, end, old or self.slice(first, last), new, **form)
        if first == last:
            around = slice(max(0, first - 4), first + 3)
            mutant.around = " ".join(token.text for token in self.tokens[around])
        self.mutants.append(mutant)

    # ---- The kinds

    def find_values(self, index):
        token = self.tokens[index]
        if not (token.in_function or token.is_initial):
            return
        if token.kind == "number":
            self.add("constant", index, index, f"{token.text} + 1")
            if re.fullmatch(r"[1-9]\d*", token.text):
                self.add("constant", index, index, f"{token.text} - 1")
        elif token.kind == "string" and not {self.tokens[index - 1].kind, self.tokens[index + 1].kind} & {"string"}:
            self.add("word", index, index, token.text[:-1] + '~"')
        elif token.kind == "character" and token.text != "'~'":
            self.add("word", index, index, "'~'")
        elif token.text in ("true", "false"):
            self.add("constant", index, index, EXCHANGED[token.text])

    def find_operators(self, index):
        token = self.tokens[index]
        if token.text == "!" and not token.is_binary:
            last = index + 1
            while self.tokens[last + 1].text in {"(", "[", ".", "->", "::", "{"} or \
                    self.tokens[last].text in {".", "->", "::", "!", "*"} or \
                    self.tokens[last + 1].is_template and self.tokens[last + 1].text == "<":
                following = self.tokens[last + 1]
                last = following.partner if following.partner is not None and following.partner > last else last + 1
                if self.tokens[last].text == "(":
                    last = self.tokens[last].partner
            if self.tokens[last].text == "(":
                last = self.tokens[last].partner
            self.add("logic", index, last, "static_cast<bool>(" + self.slice(index + 1, last) + ")")
        if not token.is_binary or index == 0:
            return
        changes = [(kind, table[token.text]) for kind, table in
                   (("boundary", BOUNDARY), ("comparison", OPPOSITE), ("arithmetic", ARITHMETIC), ("logic", LOGIC),
                    ("arithmetic", ASSIGNED)) if token.text in table]
        if not changes:
            return
        binding = BINDS.get(token.text, 0)
        first, last = self.source.first_of_left(index, binding), self.source.last_of_right(index, binding)
        if self.source.is_declared(first):
            return
        for kind, new in changes:
            self.add(kind, first, last, self.slice(first, last, index, new))

    def find_conditions(self, index):
        token = self.tokens[index]
        if token.text == "?" and token.is_binary:
            first = self.source.first_of_left(index, 1)
            old = self.slice(first, index - 1)
            self.add("condition", first, index - 1, f"!({old})", old + " ?")
        if token.text not in ("if", "while") or self.tokens[index + 1].text != "(":
            return
        last = self.tokens[index + 1].partner - 1
        first = max((at + 1 for at in range(index + 2, last) if self.tokens[at].text == ";"), default=index + 2)
        if any(self.tokens[at].text == "=" for at in range(first, last)):
            return
        form = "(mutation::runs({number}) ? {new} : static_cast<bool>({old}))"
        shown = f"{token.text} ({self.slice(first, last)})"
        self.add("condition", first, last, "false", shown, form=form)
        if token.text == "if":
            self.add("condition", first, last, "true", shown, form=form)

    def find_calls(self, index):
        token = self.tokens[index]
        if token.kind != "name" or token.text in NOT_CALLED:
            return
        if token.text in ("failed", "handled"):
            first = self.source.first_of_callee(index)
            self.add("name", first, index, self.slice(first, index, index, EXCHANGED[token.text]))
            return
        opening = index + 1
        if self.tokens[opening].is_template and self.tokens[opening].text == "<":
            opening = self.tokens[opening].partner + 1
        if self.tokens[opening].text != "(":
            return
        first, last = self.source.first_of_callee(index), self.tokens[opening].partner
        if self.source.is_declared(first):
            return
        if token.text in EXCHANGED:
            self.add("name", first, last, self.slice(first, last, index, EXCHANGED[token.text]))
        if token.text in IN_ANY_ORDER:
            return
        arguments = self.arguments(opening)
        for n in range(min(len(arguments) - 1, 2)):
            texts = [self.slice(*argument) for argument in arguments]
            if texts[n] == texts[n + 1]:
                continue
            if any(text in FIXED_ARGUMENTS or text.startswith("[") for text in texts[n:n + 2]):
                continue
            texts[n], texts[n + 1] = texts[n + 1], texts[n]
            self.add("swapped arguments", first, last, self.slice(first, opening) + ", ".join(texts) + ")")

    def arguments(self, opening):
        """The first and the last token of each argument of a call."""
        found, first, at = [], opening + 1, opening + 1
        while at < self.tokens[opening].partner:
            token = self.tokens[at]
            if token.text == ",":
                found.append((first, at - 1))
                first = at + 1
            at = token.partner + 1 if token.partner is not None and token.partner > at else at + 1
        if first < at:
            found.append((first, at - 1))
        return found

    def find_statements(self, index):
        token = self.tokens[index]
        if not self.source.is_statement_start(index) or token.text in NOT_CALLED | {"break", "continue"}:
            return
        if not (token.kind == "name" or token.text in {"(", "*", "++", "--", "::"}):
            return
        at, acts = index, token.text in {"++", "--"}
        while self.tokens[at].text != ";":
            this, following = self.tokens[at], self.tokens[at + 1]
            if this.text in {"{", "}", "]", ")"} and at > index and this.partner < index:
                return
            if not acts and this.kind == "name" and following.kind == "name":
                return  # a declaration
            if not acts and (this.text in {"*", "&", "&&"} and not this.is_binary and at > index or
                             this.is_template and this.text == ">") and following.kind == "name":
                return
            acts = acts or this.text == "(" or this.text in ASSIGNMENTS or this.text in {"++", "--"}
            at = this.partner + 1 if this.partner is not None and this.partner > at else at + 1
        if acts:
            self.add("removed statement", index, at - 1, "nothing",
                     form="(mutation::runs({number}) ? void() : void({old}))")

    # ---- Names

    def give_names(self):
        """Names each mutant by file, function and change, so that edits elsewhere do not change its name."""
        seen = {}
        for mutant in sorted(self.mutants, key=lambda m: (m.start, -m.end)):
            function = next(t.function for t in self.tokens if t.start >= mutant.start)
            old, new = shortened(mutant.old, mutant.new)
            name = f"{self.path} | {function} | {mutant.kind} | {old} -> {new}"
            if mutant.around:
                name += f" in {mutant.around}"
            seen[name] = seen.get(name, 0) + 1
            mutant.name = name if seen[name] == 1 else f"{name} | {seen[name]}"
            mutant.line = self.source.text.count("\n", 0, mutant.start) + 1


def shortened(old, new):
    """Old and new text without what they share at their ends, beyond a few characters."""
    shared = 24
    front = 0
    while front < min(len(old), len(new)) and old[front] == new[front]:
        front += 1
    back = 0
    while back < min(len(old), len(new)) - front and old[-1 - back] == new[-1 - back]:
        back += 1
    front, back = max(0, front - shared), max(0, back - shared)
    cut = lambda text: ("…" if front else "") + text[front:len(text) - back] + ("…" if back else "")
    return cut(old), cut(new) if new not in ("nothing", "true", "false") else new


def with_mutants(text, mutants):
    """The text with a choice in the place of each mutant, the place that each takes there by its number, and those
    mutants that overlap another one in part. Lines stay lines."""
    refused, around, kept = [], [], []
    for mutant in sorted(mutants, key=lambda m: (m.start, -m.end)):
        while around and around[-1].end <= mutant.start:
            around.pop()
        if around and mutant.end > around[-1].end:
            refused.append(mutant)
            continue
        around.append(mutant)
        kept.append(mutant)

    written, places = [], {}

    def write(piece):
        written.append(piece)
        written_until[0] += len(piece)

    def write_range(start, end, inside):
        while inside:
            outer = inside[0]
            within = [m for m in inside[1:] if m.start < outer.end]
            inside = inside[1 + len(within):]
            write(text[start:outer.start])
            choice = outer.form.replace("{number}", str(outer.number)).replace("{new}", outer.new)
            before, behind = choice.split("{old}")
            first = written_until[0]
            write(before)
            write_range(outer.start, outer.end, within)
            write(behind)
            places[outer.number] = (first, written_until[0])
            start = outer.end
        write(text[start:end])

    written_until = [0]
    write_range(0, len(text), kept)
    return "".join(written), places, refused
