# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
import os
import unittest

import support
from mutation import exceptions
from mutation.faults import Source, key
from mutation.ownership import Tree


class Reading(unittest.TestCase):
    def test_keys_hold_until_they_are_given_anew(self):
        text = ("# A comment.\n\nreason    one\nfile      a.cpp\nsource    x\nmutant    y\nmutant    z\n"
                "source    v\nmutant    w\nfile      b.cpp\nsource    m  // n\nmutant    o\n\n"
                "reason    two\nfile      c.cpp\nsource    p\nmutant    ;\n")
        self.assertEqual(exceptions.parse(text), [("a.cpp", "x", "y"), ("a.cpp", "x", "z"), ("a.cpp", "v", "w"),
                                                  ("b.cpp", "m  // n", "o"), ("c.cpp", "p", ";")])

    def test_nothing(self):
        self.assertEqual(exceptions.parse(""), [])
        self.assertEqual(exceptions.parse("# only a comment\n"), [])

    def test_a_reason_holds_for_its_block_only(self):
        for text in ("file      a.cpp\nsource    x\nmutant    y\n",
                     "reason    one\nfile      a.cpp\n\nfile      b.cpp\nsource    x\nmutant    y\n"):
            with self.assertRaisesRegex(ValueError, "no reason"):
                exceptions.parse(text)

    def test_unknown_keys_are_refused(self):
        with self.assertRaisesRegex(ValueError, "mutants"):
            exceptions.parse("reason    one\nfile      a.cpp\nsource    x\nmutants   y\n")

    def test_what_is_printed_can_be_read(self):
        fault = ("a.cpp", "x = 1;", ";")
        self.assertEqual(exceptions.parse("reason    r\n" + exceptions.entry(*fault)), [fault])


class Stale(unittest.TestCase):
    FAULTS = {("a.cpp", "x", "y"), ("a.cpp", "x", "z")}

    def test_what_names_a_fault_is_not(self):
        self.assertEqual(exceptions.stale([("a.cpp", "x", "y")], self.FAULTS), [])

    def test_another_file_line_or_fault_is(self):
        for one in (("b.cpp", "x", "y"), ("a.cpp", "w", "y"), ("a.cpp", "x", "v")):
            self.assertEqual(exceptions.stale([("a.cpp", "x", "z"), one], self.FAULTS), [one])

    def test_what_is_listed_twice_is(self):
        one = ("a.cpp", "x", "y")
        self.assertEqual(exceptions.stale([one, one], self.FAULTS), [one])


class ThisTree(unittest.TestCase):
    """The checked-in list and the library."""

    def test_each_listed_fault_exists(self):
        tree = Tree(support.ROOT)
        faults = {key(mutant) for file in tree.sources for mutant in Source(file, tree.read(file)).mutants()}
        with open(os.path.join(support.ROOT, "tests", "mutation-exceptions.txt"), encoding="utf-8") as text:
            listed = exceptions.parse(text.read())
        self.assertEqual(exceptions.stale(listed, faults), [])
        self.assertTrue(listed)


if __name__ == "__main__":
    unittest.main()
