# scripts/mutation/source.py: a C++ source as tokens, with what mutants have to know of their places
#
# It reads sources in the format of .clang-format, which tells apart what the grammar tells apart by names: a binary
# operator has blanks on both sides, a bracket of a template and a unary operator have not.

import re

TOKEN = re.compile(r"""
    (?P<comment>//[^\n]*|/\*.*?\*/)
  | (?P<directive>(?m:^[ ]*\#)(?:\\\n|[^\n])*)
  | (?P<string>(?:u8|u|U|L)?"(?:\\.|[^"\\\n])*")
  | (?P<character>(?:u8|u|U|L)?'(?:\\.|[^'\\\n])+')
  | (?P<number>\.?\d(?:[eEpP][+-]|['\w.])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<operator><<=|>>=|->|::|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|\.\.\.|[-+*/%&|^~!<>=?:;,.(){}\[\]])
""", re.VERBOSE | re.DOTALL)

OPENING = {"(": ")", "[": "]", "{": "}"}
CLOSING = {")", "]", "}"}
# How tightly binary operators bind. Assignments bind as loosely as the two parts of a choice.
BINDS = {"*": 10, "/": 10, "%": 10, "+": 9, "-": 9, "<<": 8, ">>": 8, "<": 7, ">": 7, "<=": 7, ">=": 7, "==": 6,
         "!=": 6, "&": 5, "^": 4, "|": 3, "&&": 2, "||": 1}
ASSIGNMENTS = {"=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>="}
STATEMENT_WORDS = {"return", "case", "else", "throw", "do", "goto", "delete", "new", "if", "for", "while", "switch"}
CONSTANT_OPERANDS = {"static_assert", "decltype", "sizeof", "alignof", "noexcept", "alignas", "__attribute__"}
CONSTANT_STATEMENTS = {"constexpr", "static_assert", "using", "enum", "case", "template", "extern", "typedef"}


class Token:
    """A token, its place in the text, and the place of the bracket that it belongs to."""

    def __init__(self, kind, text, start):
        self.kind, self.text, self.start, self.end = kind, text, start, start + len(text)
        self.partner = None  # the index of the other bracket
        self.is_template = False  # a bracket of template arguments
        self.is_binary = False
        self.in_function = False
        self.is_constant = False  # in an expression that the compiler computes
        self.is_initial = False  # in the initial value of a variable or a member
        self.function = ""  # the name of the function or the table around it


class Source:
    """The tokens of one file, without comments and directives."""

    def __init__(self, text):
        self.text = text
        self.tokens = []
        for found in TOKEN.finditer(text):
            if found.lastgroup not in ("comment", "directive"):
                self.add(Token(found.lastgroup, found.group(), found.start()))
        self.pair_brackets()
        self.mark_scopes()

    def add(self, token):
        """Adds a token. `>>` without blanks closes two lists of template arguments."""
        if token.text == ">" and self.tokens and self.tokens[-1].text == ">" and self.tokens[-1].end == token.start:
            before = self.tokens[-1]
            if before.is_binary or self.blank(before.start - 1):
                self.tokens[-1] = Token("operator", ">>", before.start)
                token = self.tokens.pop()
        token.is_binary = (token.text in BINDS or token.text in ASSIGNMENTS or token.text == "?") and \
            self.blank(token.start - 1) and self.blank(token.end)
        if token.text == ">" and self.tokens and self.tokens[-1].is_template and self.tokens[-1].text == ">":
            token.is_binary = False
        if token.text in "<>" and not token.is_binary and self.tokens[-1].text != "operator":
            token.is_template = True
        self.tokens.append(token)

    def blank(self, place):
        return place < 0 or place >= len(self.text) or self.text[place].isspace()

    def pair_brackets(self):
        open_ones = []
        for index, token in enumerate(self.tokens):
            if token.text in OPENING or token.is_template and token.text == "<":
                open_ones.append(index)
            elif token.text in CLOSING or token.is_template and token.text == ">":
                partner = open_ones.pop()
                wanted = OPENING.get(self.tokens[partner].text, ">")
                if wanted != token.text:
                    raise ValueError(f"unpaired {token.text} in line {self.text.count(chr(10), 0, token.start) + 1}")
                token.partner, self.tokens[partner].partner = partner, index

    def mark_scopes(self):
        """Tells for each token whether a function has it, which one, and whether the compiler computes its value."""
        scopes = [(False, False, "")]  # in a function; constant; its name
        head = 0  # the first token of the statement
        heads = []
        constant_until = -1
        for index, token in enumerate(self.tokens):
            in_function, constant, name = scopes[-1]
            text = token.text
            if text == "}":
                scopes.pop()
                was_list = heads.pop()
                head = index + 1 if was_list is None else was_list
                in_function, constant, name = scopes[-1]
            words = {t.text for t in self.tokens[head:index + 1] if t.kind == "name"} if text in "{;" or \
                text in CONSTANT_STATEMENTS else set()
            if text in CONSTANT_STATEMENTS and self.before(index) != "if":
                scopes[-1] = (in_function, True, name)
            if text == "(" and (self.before(index) in CONSTANT_OPERANDS or
                                self.before(index) == "constexpr" and self.before(index - 1) == "if"):
                constant_until = max(constant_until, token.partner)
            if text == "<" and token.is_template:
                constant_until = max(constant_until, token.partner)
            token.in_function, token.function = scopes[-1][0], scopes[-1][2]
            token.is_initial = not in_function and "=" in self.texts(head, index)
            token.is_constant = scopes[-1][1] or index < constant_until
            if text == "{":
                is_type = not in_function and bool(words & {"class", "struct", "union", "enum", "namespace"}) and \
                    "(" not in self.texts(head, index)
                is_body = not is_type and self.opens_body(index)
                if is_type or is_body:
                    outer = name if in_function or is_type else self.name_of(head, index)
                    # The rest of the statement that a lambda stands in goes on behind its body.
                    is_lambda = is_body and (in_function or "=" in self.texts(head, index))
                    heads.append(head if is_lambda and self.in_expression(index) else None)
                    scopes.append((is_body or in_function, "enum" in words, outer))
                    head = index + 1
                else:
                    heads.append(head)
                    scopes.append((in_function, scopes[-1][1], name or self.name_of(head, index)))
            elif text == ";" or text == "}" and head == index + 1 or text == ":" and self.ends_label(index):
                scopes[-1] = (scopes[-1][0], False, scopes[-1][2])
                head = index + 1

    def before(self, index):
        return self.tokens[index - 1].text if index > 0 else ""

    def texts(self, first, end):
        return [token.text for token in self.tokens[first:end]]

    def opens_body(self, index):
        """Is this brace the start of a function's body or of a block, and not of a list of values?"""
        before = self.tokens[index - 1]
        if before.text in {")", "const", "noexcept", "override", "mutable", "else", "do", "try", "HWY_ATTR", ";", "{",
                           "}", ":"}:
            return True
        if before.text == "]":  # of a lambda without arguments
            return self.before(before.partner) in {"(", ",", "=", "return"}
        back = index - 1  # a result type behind ->
        while back > 0 and self.tokens[back].text not in {";", "{", "}", "(", ")", "=", "return", ","}:
            if self.tokens[back].text == "->" and self.before(back) == ")" and self.tokens[back - 1].end + 1 == \
                    self.tokens[back].start:
                return True
            back = self.tokens[back].partner - 1 if self.tokens[back].text == ">" else back - 1
        return False

    def in_expression(self, index):
        """Does a statement go on behind the body of this lambda?"""
        behind = self.tokens[self.tokens[index].partner + 1:][:1]
        return bool(behind) and behind[0].text in {";", ")", ",", "("}

    def ends_label(self, index):
        """Is this colon the end of a label, and neither a part of a choice nor of a loop over a range?"""
        back = index - 1
        while back >= 0 and self.tokens[back].text not in {";", "{", "}", "?", "(", ":"}:
            if self.tokens[back].text in {"case", "default", "public", "private", "protected"}:
                return True
            back -= 1
        return False

    def name_of(self, head, index):
        """The name of the function, lambda or table whose brace this is."""
        at = head
        while at < index:
            token = self.tokens[at]
            if token.text == "template":
                at = self.tokens[at + 1].partner + 1
                continue
            if token.text == "operator":
                return "operator" + self.tokens[at + 1].text
            if token.text in {"(", "="} and at > head:
                before = self.tokens[at - 1]
                while before.text in {"]", ">"}:
                    before = self.tokens[before.partner - 1]
                if before.text not in CONSTANT_OPERANDS:
                    return before.text
            at = token.partner + 1 if token.partner is not None and token.partner > at else at + 1
        return ""

    # ---- The extents of operands

    def is_operand_end(self, index):
        token = self.tokens[index]
        return token.text in CLOSING or token.is_template or \
            token.kind in ("name", "number", "string", "character") and token.text not in STATEMENT_WORDS

    def first_of_left(self, operator, binding):
        """The first token of what stands left of a binary operator."""
        at = operator - 1
        while at >= 0:
            token = self.tokens[at]
            if token.text in {")", "}", "]"} and at < operator - 1:
                behind = self.tokens[at + 1]
                if not (behind.is_binary or behind.text in {".", "->", "(", "[", "::", "{", ")"}):
                    break  # the end of a condition or of a block
            if token.text in CLOSING or token.is_template and token.text == ">":
                at = token.partner - 1
                continue
            if token.text in OPENING or token.text in {",", ";", ":"} or token.is_template or \
                    token.text in STATEMENT_WORDS or token.text in ASSIGNMENTS or token.text == "?":
                break
            if token.is_binary and BINDS.get(token.text, 0) < binding:
                break
            at -= 1
        return at + 1

    def last_of_right(self, operator, binding):
        """The last token of what stands right of a binary operator."""
        at = operator + 1
        while at < len(self.tokens):
            token = self.tokens[at]
            if token.text in OPENING or token.is_template and token.text == "<":
                at = token.partner + 1
                continue
            if token.text in CLOSING or token.is_template or token.text in {",", ";", ":", "?"}:
                break
            if token.is_binary and BINDS.get(token.text, 0) <= binding:
                break
            at += 1
        return at - 1

    def first_of_callee(self, name):
        """The first token of a.b(c).d or a::b<c>, of which `name` is the last name."""
        at = name
        while at > 0 and self.before(at) in {"::", ".", "->"}:
            at -= 2
            if self.before(at + 1) == "::" and self.tokens[at].kind == "operator" and self.tokens[at].text != ">":
                return at + 1  # a name of the global namespace
            while at > 0 and (self.tokens[at].text in {")", "]"} or self.tokens[at].text == ">"):
                at = self.tokens[at].partner
                if self.tokens[at - 1].kind == "name" or self.tokens[at - 1].text in {")", "]", ">"}:
                    at -= 1
        return at

    def is_declared(self, first):
        """Does a type stand before this token, so that it is a declaration?"""
        if first == 0:
            return False
        before = self.tokens[first - 1]
        if before.kind == "name":
            return before.text not in STATEMENT_WORDS
        return before.is_template and before.text == ">" or \
            before.text in {"*", "&", "&&"} and not before.is_binary and self.blank(before.end) and \
            not self.blank(before.start - 1)

    def is_statement_start(self, index):
        before = self.before(index)
        if before in {";", "{", "}", "else", "do"}:
            return before != "{" or self.opens_body(index - 1)
        if before == ")":
            opener = self.tokens[index - 1].partner
            return self.before(opener) in {"if", "for", "while", "constexpr"}
        return before == ":" and self.ends_label(index - 1)
