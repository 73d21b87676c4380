# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
import unittest

import support  # noqa: F401, finds the modules
from mutation.choices import with_all
from mutation.faults import Mutant, Source, key


def faults(code, file="a.cpp"):
    """What becomes of `code` in the body of a function."""
    before, after = "void f() {\n", "\n}\n"
    source = Source(file, before + code + after)
    return [source.with_fault(mutant)[len(before):-len(after)] for mutant in source.mutants()]


class EachKind(unittest.TestCase):
    def expect(self, code, *expected):
        """These are among the faults."""
        found = faults(code)
        for one in expected:
            self.assertIn(one, found)
        return found

    def expect_no(self, code, *unexpected):
        found = faults(code)
        for one in unexpected:
            self.assertNotIn(one, found)

    def test_comparisons(self):
        self.expect("return a < b;", "return a <= b;", "return a > b;")
        self.expect("return a >= b;", "return a > b;", "return a <= b;")
        self.expect("return a == b;", "return a != b;")

    def test_operators(self):
        for before, after in (("+", "-"), ("-", "+"), ("*", "/"), ("/", "*"), ("%", "*"), ("<<", ">>"), ("&", "|"),
                              ("|", "&"), ("^", "|"), ("&&", "||"), ("||", "&&")):
            self.expect(f"return a {before} b;", f"return a {after} b;")
        for before, after in (("+=", "-="), ("-=", "+="), ("*=", "/="), ("<<=", ">>="), ("^=", "|=")):
            self.expect(f"a {before} b;", f"a {after} b;")
        self.expect("++a;", "--a;")
        self.expect("b = !a;", "b = a;")

    def test_texts_are_only_added(self):
        self.expect_no('s = "a" + t;', 's = "a" - t;')

    def test_signs_that_are_not_binary_stay(self):
        self.expect_no("f(-a, *b, &c);", "f(+a, *b, &c);", "f(-a, /b, &c);", "f(-a, *b, |c);")

    def test_constants(self):
        self.expect("return g(7);", "return g((7 + 1));", "return g((7 - 1));")
        self.expect("return g('a');", "return g(char('a' + 1));")
        self.expect("a = true;", "a = false;")
        self.expect("a = false;", "a = true;")

    def test_zero_is_not_made_negative(self):
        self.expect("a = 0;", "a = (0 + 1);")
        self.expect_no("a = 0;", "a = (0 - 1);")

    def test_conditions(self):
        self.expect("if (a < b) c();", "if (!(a < b)) c();")
        self.expect("while (a) c();", "while (!(a)) c();")

    def test_an_inverted_condition_is_not_planted_twice(self):
        self.assertEqual(faults("if (a == b) ++c;").count("if (a != b) ++c;"), 1)
        self.expect_no("if (a == b) ++c;", "if (!(a == b)) ++c;")
        self.expect_no("if (!a) ++c;", "if (!(!a)) ++c;")

    def test_choices(self):
        self.expect("a = b ? c : d;", "a = b ? d : c;")
        self.expect("return g(a < 1 ? h(b, c) : d, e);", "return g(a < 1 ? d : h(b, c), e);")

    def test_statements(self):
        self.expect("a();\nb();", ";\nb();", "a();\n;")
        self.expect("if (a) b();", "if (a) ;")
        self.expect("for (;;) break;", "for (;;) ;")

    def test_declarations_are_no_statements_that_can_go(self):
        self.expect_no("int a = b;", ";")
        self.expect_no("std::string s(a);", ";")
        self.expect_no("T* p = a;", ";")
        self.expect_no("const auto c = a;", ";")

    def test_parts_of_a_loop_are_no_statements(self):
        self.expect_no("for (a(); b(); c()) d();", "for (;; b(); c()) d();", "for (a(); ; c()) d();")

    def test_results(self):
        self.expect("return a;", "return {};")
        self.expect("return;", ";")
        for empty in ("{}", "nullptr", "false", '""'):
            self.expect_no(f"return {empty};", "return {};")

    def test_arguments(self):
        self.expect("g(a, b, c);", "g(b, a, c);", "g(a, c, b);")
        self.expect("g(h(a, 1), b);", "g(b, h(a, 1));")
        self.expect_no("g(a, a);", "g(a, a);")
        self.expect_no("a = std::min(b, c);", "a = std::min(c, b);")


class Places(unittest.TestCase):
    def test_outside_functions_only_constants_of_a_unit(self):
        text = "const int a = 5 + b;\n"
        self.assertEqual([mutant.mutant for mutant in Source("a.cpp", text).mutants()],
                         ["const int a = (5 + 1) + b;", "const int a = (5 - 1) + b;"])
        self.assertEqual(list(Source("a.h", text).mutants()), [])

    def test_none_in_static_assertions_comments_and_texts(self):
        self.assertEqual(faults('static_assert(1 < 2);'), [])
        self.assertEqual(faults('// a < b'), [])
        self.assertEqual(faults('int a = "1 + 2 < 3";'), [])

    def test_lines_and_their_text_on_one_line(self):
        source = Source("a.cpp", "void f() {\n    g(a,\n      b);\n}\n")
        swapped = [mutant for mutant in source.mutants() if mutant.mutant == "g(b, a);"]
        self.assertEqual(len(swapped), 1)
        self.assertEqual(swapped[0].line, 2)
        self.assertEqual(key(swapped[0]), ("a.cpp", "g(a, b);", "g(b, a);"))

    def test_no_fault_comes_twice(self):
        found = faults("if (a < 1 && b) { ++c; g(a, !b); }\nreturn a ? b : 2;")
        self.assertEqual(len(found), len(set(found)))

    def test_no_fault_is_the_source(self):
        code = "if (a < 1 && b) { ++c; g(a, !b); }\nreturn a ? b : 2;"
        self.assertNotIn(code, faults(code))


class Choices(unittest.TestCase):
    TEXT = "int g() {\n    return a + b;\n}\nint f() {\n    return 1;\n}\n"

    def mutant(self, old, new):
        begin = self.TEXT.index(old)
        return Mutant("a.cpp", 0, "", "", begin, begin + len(old), new)

    def test_a_body_becomes_a_choice(self):
        text, numbers = with_all(Source("a.cpp", self.TEXT), {3: self.mutant("+", "-"), 7: self.mutant("b", "c")},
                                 "/number")
        self.assertEqual(numbers, [3, 7])
        self.assertEqual(text[text.index("int g()"):],
                         'int g() {if (kx_mutant == 3) {\n#line 1 "mutant-3"\n\n    return a - b;\n} else '
                         'if (kx_mutant == 7) {\n#line 1 "mutant-7"\n\n    return a + c;\n} else '
                         '{\n#line 1 "a.cpp"\n\n    return a + b;\n}}\nint f() {\n    return 1;\n}\n')
        self.assertIn('open("/number"', text)

    def test_the_lines_of_the_source_keep_their_numbers(self):
        text, _ = with_all(Source("a.cpp", self.TEXT), {1: self.mutant("1", "2")}, "/number")
        self.assertIn('#line 4 "a.cpp"\n\n    return 1;', text)

    def test_what_is_outside_functions_is_left_out(self):
        text = "int a = 5;\nconstexpr int f() { return 6; }\n"
        source = Source("a.cpp", text)
        mutants = dict(enumerate(source.mutants(), 1))
        self.assertGreaterEqual(len(mutants), 4)
        self.assertEqual(with_all(source, mutants, "/number")[1], [])


if __name__ == "__main__":
    unittest.main()
