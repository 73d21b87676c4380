# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""C++ as tokens: enough to find brackets, the bodies of functions and binary operators."""
import re

TOKEN = re.compile(r"""
    (?P<skip>\s+|//[^\n]*|/\*.*?\*/|^[ \t]*\#(?:\\\n|[^\n])*)
  | (?P<text>(?:u8|[uUL])?R"(?P<tag>[^(]*)\(.*?\)(?P=tag)"|(?:u8|[uUL])?"(?:\\.|[^"\\])*")
  | (?P<char>'(?:\\.|[^'\\])+')
  | (?P<number>\.?\d(?:[eEpP][+-]|[\w.'])*)
  | (?P<word>[A-Za-z_]\w*)
  | (?P<sign><<=|>>=|\.\.\.|->|::|\+\+|--|<<|>>|[-+*/%&|^!=<>]=|&&|\|\||.)
""", re.X | re.S | re.M)

CLOSING = {"(": ")", "[": "]", "{": "}"}


class Tokens:
    """A text of C++ that clang-format has laid out, as tokens."""

    def __init__(self, text):
        self.text = text
        self.tokens = [match for match in TOKEN.finditer(text) if match.lastgroup != "skip"]
        self.words = [match.group() for match in self.tokens] + [""]
        self.partner = {}  # bracket: the one that belongs to it
        self.in_code = [False] * len(self.words)  # inside the body of a function
        self.skipped = [False] * len(self.words)  # inside a static_assert
        self._pair()

    def _pair(self):
        open_brackets, code, asserted = [], [False], -1
        for i, word in enumerate(self.words):
            if word == "static_assert":
                asserted = 0
            self.skipped[i] = asserted >= 0
            if word == ";":
                asserted = -1
            self.in_code[i] = code[-1]
            if word in CLOSING:
                open_brackets.append(i)
                before = self.words[i - 1]
                body = word == "{" and before in (")", "]", "const", "noexcept", "override", "else", "do", "try")
                code.append(code[-1] or body)
            elif word in CLOSING.values() and open_brackets:
                code.pop()
                begin = open_brackets.pop()
                self.partner[begin], self.partner[i] = i, begin

    def place(self, i):
        return self.tokens[i].start(), self.tokens[i].end()

    def between(self, first, last):
        """The text of the tokens [first, last]."""
        return self.text[self.tokens[first].start():self.tokens[last].end()]

    def after(self, i):
        """The token after a token, or after the brackets that it opens."""
        return (self.partner[i] if self.words[i] in CLOSING else i) + 1

    def is_binary(self, i):
        begin, end = self.place(i)  # clang-format puts blanks around binary operators, and only there
        return self.text[begin - 1:begin].isspace() and self.text[end:end + 1].isspace()

    def bodies(self):
        """(begin, end) of what is inside the bodies of functions that only run while the program does."""
        for i, word in enumerate(self.words):
            if word == "{" and not self.in_code[i] and self.in_code[i + 1] and not self._is_constexpr(i):
                yield self.tokens[i].end(), self.tokens[self.partner[i]].start()

    def _is_constexpr(self, body):
        i = body - 1
        while i >= 0 and self.words[i] not in (";", "{", "}"):
            if self.words[i] == "constexpr":
                return True
            i = (self.partner[i] if self.words[i] in (")", "]") else i) - 1
        return False
