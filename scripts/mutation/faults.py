# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""The faults that can be planted into a source."""
import collections

from .tokens import CLOSING, Tokens

# A fault: its place, the line before and after, and what replaces the text [begin, end).
Mutant = collections.namedtuple("Mutant", "file line source mutant begin end replacement")

CHANGED = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
           "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "<<": ">>", ">>": "<<", "&": "|", "|": "&",
           "^": "|", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*=", "<<=": ">>=", ">>=": "<<=",
           "&=": "|=", "|=": "&=", "^=": "|="}
# Words before brackets that do not hold arguments, or whose arguments may be swapped.
NO_CALL = {"if", "for", "while", "switch", "catch", "return", "sizeof", "alignof", "decltype", "operator",
           "static_assert", "min", "max", "memcmp", "strcmp", "swap"}
NO_EXPRESSION = {"const", "constexpr", "static", "using", "return", "throw", "break", "continue", "if", "for",
                 "while", "do", "else", "switch", "case", "default", "try", "catch", "auto", "struct", "class",
                 "enum", "typedef", "template", "namespace", "unsigned", "extern", "goto", "public", "private",
                 "protected", "static_assert"}
EMPTY_RESULTS = {"true", "false", "0", "nullptr", "{}", "std::string()", '""'}


def key(mutant):
    """What names a fault where its line number may change."""
    return mutant.file, mutant.source, mutant.mutant


class Source(Tokens):
    """A source and the faults that can be planted into it."""

    def __init__(self, file, text):
        super().__init__(text)
        self.file = file

    def mutants(self):
        """Every fault once, in the order of the text."""
        seen = set()
        for begin, end, replacement in self._changes():
            first = self.text.rfind("\n", 0, begin) + 1
            last = self.text.find("\n", end)
            before = " ".join(self.text[first:last].split())
            after = " ".join((self.text[first:begin] + replacement + self.text[end:last]).split())
            mutant = Mutant(self.file, self.text.count("\n", 0, begin) + 1, before, after, begin, end, replacement)
            text = hash(self.with_fault(mutant))
            if text not in seen:
                seen.add(text)
                yield mutant

    def with_fault(self, mutant):
        return self.text[:mutant.begin] + mutant.replacement + self.text[mutant.end:]

    def _changes(self):
        """(begin, end, replacement) of every fault."""
        header = self.file.endswith(".h")
        for i, (token, word) in enumerate(zip(self.tokens, self.words)):
            if self.skipped[i] or not (self.in_code[i] or not header):
                continue
            begin, end = self.place(i)
            kind = token.lastgroup
            if kind == "number":
                yield begin, end, f"({word} + 1)"
                if word not in ("0", "0U", "0UL", "0.0"):
                    yield begin, end, f"({word} - 1)"
            elif kind == "char":
                yield begin, end, f"char({word} + 1)"
            elif word in ("true", "false"):
                yield begin, end, "false" if word == "true" else "true"
            if not self.in_code[i]:
                continue
            beside = self.tokens[i - 1:i + 2:2]
            if word in ("+", "-") and any(token.lastgroup == "text" for token in beside):
                pass  # strings can only be added
            elif word in CHANGED and self.is_binary(i):
                yield begin, end, CHANGED[word]
                if word in ("<", ">", "<=", ">="):  # the other way round
                    yield begin, end, {"<": ">", ">": "<", "<=": ">=", ">=": "<="}[word]
            elif word in ("++", "--"):
                yield begin, end, "--" if word == "++" else "++"
            elif word == "!":
                yield begin, end, ""
            elif word == "?":
                yield from self._swapped_choice(i)
            elif word in ("if", "while"):
                yield from self._inverted(i)
            elif word == "(" and self.tokens[i - 1].lastgroup == "word" and self.words[i - 1] not in NO_CALL:
                yield from self._swapped_arguments(i)
            if self._starts_statement(i):
                yield from self._without_statement(i)

    def _inverted(self, i):
        begin = i + 1 if self.words[i + 1] == "(" else i + 2  # "if constexpr"
        end = self.partner[begin]
        condition = self.words[begin + 1:end]
        single = not {"&&", "||"} & set(condition)
        if single and ({"==", "!="} & set(condition) or condition[0] == "!"):
            return  # a changed operator gives that fault
        inner = self.between(begin + 1, end - 1)
        yield self.tokens[begin + 1].start(), self.tokens[end - 1].end(), f"!({inner})"

    def _pieces(self, first, last):
        """The ranges of tokens in [first, last) between commas outside inner brackets."""
        start = i = first
        while i < last:
            if self.words[i] == ",":
                yield start, i - 1
                start = i + 1
            i = self.after(i)
        yield start, last - 1

    def _swapped_arguments(self, i):
        pieces = list(self._pieces(i + 1, self.partner[i]))
        for (a, b), (c, d) in zip(pieces, pieces[1:]):
            one, other = self.between(a, b), self.between(c, d)
            if one != other:
                middle = self.text[self.tokens[b].end():self.tokens[c].start()]
                yield self.tokens[a].start(), self.tokens[d].end(), other + middle + one

    def _swapped_choice(self, i):
        begin = i
        while self.words[begin] not in ("=", "return", "(", ",", ";", "{"):
            begin -= 1
        if {"==", "!="} & set(self.words[begin:i]):
            return  # a changed operator gives that fault
        colon, depth = i + 1, 1
        while True:
            depth += {"?": 1, ":": -1}.get(self.words[colon], 0)
            if depth == 0:
                break
            colon = self.after(colon)
        end = colon + 1
        while self.words[end] not in (",", ";", ")", "}", "]", ":"):
            end = self.after(end)
        yes, no = self.between(i + 1, colon - 1), self.between(colon + 1, end - 1)
        yield self.tokens[i + 1].start(), self.tokens[end - 1].end(), f"{no} : {yes}"

    def _starts_statement(self, i):
        before = self.words[i - 1]
        if before == ")":
            opener = self.partner[i - 1]
            return self.words[opener - 1] in ("if", "for", "while", "constexpr")
        if before in ("{", "}"):
            brace = i - 1 if before == "{" else self.partner.get(i - 1, i - 1)
            return self.words[brace - 1] in (")", "]", "const", "noexcept", "override", "else", "do", "try", "{",
                                             "}", ";")
        return before in (";", "else", "do", ":") and not self._in_head(i)

    def _in_head(self, i):
        """True between the brackets of a for, or in the middle of a choice."""
        depth = 0
        for j in range(i - 1, -1, -1):
            word = self.words[j]
            if word in ("}", ")", "]"):
                depth += 1
            elif word in CLOSING:
                if depth == 0:
                    return word != "{"
                depth -= 1
            elif word == "?" and depth == 0:
                return True
            elif word == ";" and depth == 0 and j < i - 1:
                return False
        return False

    def _without_statement(self, i):
        end = i
        while self.words[end] not in (";", "", ")", "]", "}"):
            end = self.after(end)
        if self.words[end] != ";":
            return
        begin, after = self.tokens[i].start(), self.tokens[end].end()
        word = self.words[i]
        if word == "return":
            result = self.between(i + 1, end - 1) if end > i + 1 else None
            if result is None:
                yield begin, after, ";"
            elif result not in EMPTY_RESULTS:
                yield begin, after, "return {};"
        elif word in ("break", "continue"):
            yield begin, after, ";"
        elif word not in {*NO_EXPRESSION, *CLOSING, *CLOSING.values()} and not self._declares(i):
            yield begin, after, ";"

    def _declares(self, i):
        """True for "Type name": a name right after a name, or after its closing > or its * or &."""
        if self.tokens[i].lastgroup != "word":
            return False
        while self.words[i + 1] == "::":
            i += 2
        following = self.tokens[i + 1]
        if following.lastgroup == "word":
            return True
        return following.group() in "<*&" and following.start() == self.tokens[i].end()
