# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
import os
import subprocess
import sys
import unittest

import support
from mutation.faults import Source
from mutation.ownership import UTILS, Tree
from mutation.report import Progress, check_list, choose


class Choice(unittest.TestCase):
    def test_is_made_by_the_seed(self):
        mutants = list(Source("a.cpp", "int a[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};\n").mutants())
        self.assertEqual(choose(mutants, 4, 7), choose(mutants, 4, 7))
        self.assertNotEqual(choose(mutants, 4, 7), choose(mutants, 4, 8))
        self.assertEqual(len(choose(mutants, 4, 7)), 4)
        self.assertCountEqual(choose(mutants, None, 7), mutants)
        self.assertCountEqual(choose(mutants, 1000, 7), mutants)

    def test_hardly_depends_on_other_code(self):
        names = [f"int {name} = 5;\n" for name in "abcdefghi"]
        few, many = ({mutant.mutant for mutant in choose(list(Source("a.cpp", "".join(lines)).mutants()), 5, 7)}
                     for lines in (names[:-1], names))
        self.assertGreaterEqual(len(few & many), 3)  # one line has two faults

    def test_is_in_the_order_of_the_sources(self):
        mutants = list(Source("a.cpp", "int a[] = {1,\n2,\n3,\n4,\n5};\n").mutants())
        lines = [mutant.line for mutant in choose(mutants, 6, 1)]
        self.assertEqual(lines, sorted(lines))


class Table(unittest.TestCase):
    def test_form(self):
        progress = Progress(["kxOne", "detail/two"])
        progress.results["kxOne"].update({"killed": 5, "timed out": 1, "survived": 2, "listed": 1, "same code": 1})
        progress.seconds["kxOne"] = 25.0
        self.assertEqual(list(progress.table()), [
            "| | planted | killed | timed out | survived | listed | same code | does not compile | noticed | "
            "seconds each |",
            "|---|---:|---:|---:|---:|---:|---:|---:|---:|---:|",
            "| kxOne | 10 | 5 | 1 | 2 | 1 | 1 | 0 | 75.0 % | 2.5 |",
            "| detail/two | 0 | 0 | 0 | 0 | 0 | 0 | 0 | 0.0 % | 0.0 |"])
        self.assertEqual(progress.survived(), 2)


class Checks(support.TestInFolder):
    """Before anything is planted."""

    LISTED = "reason    r\nfile      kxOne.cpp\nsource    int a = 5;\nmutant    int a = (5 + 1);\n"

    def setUp(self):
        super().setUp()
        self.write(f"{UTILS}/kxOne.cpp", "int a = 5;\n")
        self.write("tests/kxOne_test.cpp", "")
        self.write("tests/CMakeLists.txt", "kx_test(kxOne_test)\n")
        self.write("tests/mutation-exceptions.txt", self.LISTED)

    def check(self):
        tree = Tree(self.folder)
        return check_list(tree, {file: Source(file, tree.read(file)) for file in tree.sources})

    def test_pass(self):
        self.assertEqual(self.check(), {("kxOne.cpp", "int a = 5;", "int a = (5 + 1);")})

    def test_refuse_a_listed_fault_that_does_not_exist(self):
        self.write(f"{UTILS}/kxOne.cpp", "int a = 6;\n")
        with self.assertRaisesRegex(SystemExit, r"(?s)mutation-exceptions.txt: no such fault.*int a = \(5 \+ 1\);"):
            self.check()

    def test_refuse_an_exception_without_a_reason(self):
        self.write("tests/mutation-exceptions.txt", self.LISTED.split("\n", 1)[1])
        with self.assertRaisesRegex(SystemExit, "no reason"):
            self.check()

    def test_refuse_a_source_that_no_program_tests(self):
        self.write(f"{UTILS}/detail/gold/vein.cpp", "")
        with self.assertRaisesRegex(SystemExit, "no test program tests detail/gold/vein.cpp"):
            self.check()


class CommandLine(unittest.TestCase):
    """The program itself, which plants nothing for --list."""

    def mutate(self, *arguments):
        return subprocess.run([sys.executable, os.path.join(support.ROOT, "scripts", "mutate"), *arguments],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, check=False)

    def test_lists_a_class_a_room_and_a_source(self):
        for name, file in (("kxCrypt", "kxCrypt.cpp"), ("detail/crc", "detail/crc/table.h"),
                           ("detail/files/footer.cpp", "detail/files/footer.cpp")):
            lines = self.mutate("--list", name).stdout.splitlines()
            self.assertIn(file, {line.split(":")[0] for line in lines[::3]})
            self.assertEqual({line[0] for line in lines[1::3]}, {"-"})
            self.assertEqual({line[0] for line in lines[2::3]}, {"+"})

    def test_lists_so_many_of_each_name(self):
        self.assertEqual(len(self.mutate("--list", "--count", "2", "kxCrypt", "detail/crc").stdout.splitlines()), 12)

    def test_names_what_it_does_not_know(self):
        outcome = self.mutate("--list", "detail/nothing")
        self.assertEqual((outcome.returncode, outcome.stdout), (1, ""))
        self.assertEqual(outcome.stderr, "mutate: no class, no room and no source of one: detail/nothing\n")


if __name__ == "__main__":
    unittest.main()
