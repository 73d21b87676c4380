# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
import unittest

import support  # noqa: F401, finds the modules
from mutation.tokens import Tokens


def kinds(text):
    return [(token.lastgroup, token.group()) for token in Tokens(text).tokens]


def bodies(text):
    return [text[begin:end] for begin, end in Tokens(text).bodies()]


class Words(unittest.TestCase):
    def test_signs_are_as_long_as_possible(self):
        self.assertEqual(Tokens("a<<=b>>c->d::e++&&!f...").words[:-1],
                         ["a", "<<=", "b", ">>", "c", "->", "d", "::", "e", "++", "&&", "!", "f", "..."])

    def test_comments_and_directives_are_left_out(self):
        text = '#include <a>\n#define B \\\n  b\nint c; // d\n/* e\n f */ int g;\n'
        self.assertEqual(Tokens(text).words[:-1], ["int", "c", ";", "int", "g", ";"])

    def test_numbers_with_their_separators_exponents_and_suffixes(self):
        for number in ("0", "0x1Fu", "1'000'000", "1.5e-3", ".5f", "0x1p+4", "64UL"):
            self.assertEqual(kinds(number), [("number", number)])

    def test_texts_hide_what_looks_like_code(self):
        for text in ('"a + b"', r'"\"; //"', 'R"(x " + y)"', 'u8R"tag()" )tag"', 'L"a"'):
            self.assertEqual(kinds(text), [("text", text)])
        for text in ("'+'", r"'\''", r"'\x1b'"):
            self.assertEqual(kinds(text), [("char", text)])

    def test_place_and_text_of_tokens(self):
        tokens = Tokens("f(a, b)")
        self.assertEqual(tokens.place(2), (2, 3))
        self.assertEqual(tokens.between(2, 4), "a, b")


class Brackets(unittest.TestCase):
    def test_partners(self):
        tokens = Tokens("f(a[1]){}")
        self.assertEqual(tokens.partner, {1: 6, 6: 1, 3: 5, 5: 3, 7: 8, 8: 7})
        self.assertEqual(tokens.after(1), 7)
        self.assertEqual(tokens.after(0), 1)

    def test_binary_signs_have_blanks_around(self):
        tokens = Tokens("a * b; int *c = -d;")
        self.assertEqual([tokens.words[i] for i in range(len(tokens.tokens)) if tokens.is_binary(i)
                          and tokens.tokens[i].lastgroup == "sign"], ["*", "="])

    def test_code_is_what_bodies_of_functions_hold(self):
        tokens = Tokens("namespace n { int x = 1; int f() { return 2; } struct S { int y = 3; }; }")
        inside = {word for word, code in zip(tokens.words, tokens.in_code) if code}
        self.assertIn("2", inside)
        self.assertTrue(inside.isdisjoint({"1", "3", "x", "y"}))

    def test_static_assertions_are_skipped(self):
        tokens = Tokens("static_assert(a == 1); int b = 2;")
        skipped = [word for word, skip in zip(tokens.words, tokens.skipped) if skip]
        self.assertIn("1", skipped)
        self.assertNotIn("2", skipped)


class Bodies(unittest.TestCase):
    def test_of_functions_but_not_of_types(self):
        self.assertEqual(bodies("struct S { int a; void f() const { b; } }; int g() { c; }"), [" b; ", " c; "])

    def test_outermost_only(self):
        self.assertEqual(bodies("void f() { if (a) { b; } }"), [" if (a) { b; } "])

    def test_not_of_what_the_compiler_may_run(self):
        self.assertEqual(bodies("constexpr int f() { return 1; } int g() { return 2; }"), [" return 2; "])


if __name__ == "__main__":
    unittest.main()
