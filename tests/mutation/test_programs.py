# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
import contextlib
import io
import os
import shutil
import subprocess
import unittest

import support
from mutation.faults import Source
from mutation.ownership import UTILS
from mutation.programs import Judge, Runner, wrong_numbers
from mutation.workshop import Workshop


class Running(support.TestInFolder):
    def program(self, name, script):
        self.write(name, "#!/bin/sh\n" + script, 0o755)

    def test_results(self):
        self.program("good", "exit 0\n")
        self.program("bad", "exit 1\n")
        self.program("crash", "kill -SEGV $$\n")
        self.program("endless", "kill -XCPU $$\n")  # what the kernel sends when the time is over
        runner = Runner(self.folder)
        self.assertEqual(runner.measure(["good", "bad"]), ["bad"])
        for name, result in (("good", "survived"), ("bad", "killed"), ("crash", "killed"), ("endless", "timed out")):
            self.assertEqual(runner.run([name]), result)

    def test_one_that_notices_is_enough_and_comes_first_the_next_time(self):
        log = os.path.join(self.folder, "log")
        self.program("a", f"echo a >>{log}\n")
        self.program("b", f"echo b >>{log}; exit 1\n")
        self.program("c", f"echo c >>{log}\n")
        runner = Runner(self.folder)
        runner.seconds = {"a": 1.0, "b": 1.5, "c": 2.0}
        self.assertEqual(runner.run(["c", "b", "a"]), "killed")
        self.assertEqual(self.read("log"), "a\nb\n")
        self.assertEqual(runner.run(["c", "b", "a"]), "killed")
        self.assertEqual(self.read("log"), "a\nb\nb\n")

    def test_some_run_on_survivors_only(self):
        log = os.path.join(self.folder, "log")
        self.program("a", f"echo a >>{log}\n")
        self.program("b", f"echo b >>{log}; exit 1\n")
        runner = Runner(self.folder)
        runner.seconds = {"a": 2.0, "b": 1.0}
        self.assertEqual(runner.run(["a"], ["b"]), "killed")
        self.assertEqual(self.read("log"), "a\nb\n")
        self.assertEqual(runner.run(["b"], ["a"]), "killed")
        self.assertEqual(self.read("log"), "a\nb\nb\n")

    def test_a_folder_of_its_own_that_is_removed(self):
        self.program("where", f'[ "$TMPDIR" = "$PWD" ] && touch x && pwd >{self.folder}/place\n')
        self.assertEqual(Runner(self.folder).run(["where"]), "survived")
        self.assertFalse(os.path.exists(self.read("place").strip()))


class FakeWorkshop:
    """Remembers the texts; the build refuses those faults whose text holds one of `refused`."""
    number_file = "/number"

    def __init__(self, texts, refused=(), breaks=False):
        self.texts = dict(texts)
        self.refused = refused
        self.breaks = breaks  # a build of many faults fails without naming one
        self.number = 0
        self.builds = []  # how many programs each has built

    def write_source(self, file, text):
        self.texts[file] = text

    def build(self, programs, **environment):
        self.builds.append(len(programs))
        text = "".join(self.texts.values())
        if self.breaks and "kx_mutant" in text:
            return False, "collect2: error"
        output = ""
        for part in text.split('#line 1 "mutant-')[1:]:
            body = part.split("} else ")[0]
            if any(one in body for one in self.refused):
                output += f"mutant-{part.split(chr(34))[0]}:2:5: error: no\n"
        if "kx_mutant" not in text and any(one in text for one in self.refused):
            output += "a.cpp:2:5: error: no\n"
        return not output, output

    def choose(self, number):
        self.number = number

    def is_same_code(self, file, text, original, units):
        return "same" in text and "same" not in original


class FakeRunner:
    """Notices the faults whose text holds one of `noticed`."""

    def __init__(self, workshop, noticed):
        self.workshop = workshop
        self.noticed = noticed

    def measure(self, programs):
        return []

    def run(self, programs, last):
        text = "".join(self.workshop.texts.values())
        mark = f'#line 1 "mutant-{self.workshop.number}"'
        if mark in text:
            text = text.split(mark)[1].split("} else ")[0]
        return "killed" if any(one in text for one in self.noticed) else "survived"


class FakeTree:
    @staticmethod
    def compiled_for(file):
        return [file]


class Judging(unittest.TestCase):
    TEXT = "void f() {\n    a = b + c;\n}\nint x = 5;\n"
    RESULTS = {"a = b - c;": "killed", ";": "survived", "int x = (5 + 1);": "survived", "int x = (5 - 1);": "survived"}

    def judge(self, workshop, noticed, together=True):
        source = Source("a.cpp", self.TEXT)
        judge = Judge(workshop, FakeRunner(workshop, noticed), FakeTree())
        with contextlib.redirect_stderr(io.StringIO()):
            return {mutant.mutant: result for mutant, result in judge.judge(
                {"a.cpp": source}, list(source.mutants()), {"a.cpp": ({"test"}, {"slow_test"})}, together)}

    def test_all_are_judged_and_the_source_is_as_before(self):
        for together in (True, False):
            workshop = FakeWorkshop({"a.cpp": self.TEXT})
            self.assertEqual(self.judge(workshop, ["b - c"], together), self.RESULTS)
            self.assertEqual(workshop.texts, {"a.cpp": self.TEXT})

    def test_those_in_functions_are_built_together(self):
        workshop = FakeWorkshop({"a.cpp": self.TEXT})
        self.judge(workshop, [])
        self.assertEqual(workshop.builds, [0, 2, 2, 2])  # the library, the programs, two faults outside functions

    def test_programs_are_built_when_the_library_is(self):
        workshop = FakeWorkshop({"a.cpp": self.TEXT}, refused=["b - c"])
        self.judge(workshop, [])
        self.assertEqual(workshop.builds, [0, 0, 2, 2, 2])

    def test_those_that_do_not_compile(self):
        workshop = FakeWorkshop({"a.cpp": self.TEXT}, refused=["b - c", "5 - 1"])
        results = self.judge(workshop, [])
        self.assertEqual(results, {**self.RESULTS, "a = b - c;": "does not compile",
                                   "int x = (5 - 1);": "does not compile"})

    def test_each_by_itself_where_they_cannot_be_built_together(self):
        workshop = FakeWorkshop({"a.cpp": self.TEXT}, breaks=True)
        self.assertEqual(self.judge(workshop, ["b - c"]), self.RESULTS)

    def test_numbers_in_what_the_compiler_says(self):
        self.assertEqual(wrong_numbers("a.cpp:3:1: error: x\nmutant-12:3:4: error: y\nmutant-7:1:2: warning: z\n"
                                       "In file\nmutant-3:9:9: error: w\n"), {12, 3})


@unittest.skipUnless(shutil.which("git"), "the copy is made of what git lists")
class Copy(support.TestInFolder):
    def setUp(self):
        super().setUp()
        subprocess.run(["git", "init", "-q", self.folder], check=True)
        self.write(".gitignore", "/build/\n")
        self.write(f"{UTILS}/a.cpp", "one\n")
        self.write("b", "two\n")
        self.workshop = Workshop(self.folder)
        self.workshop.update_copy()
        self.copy = f"build/mutate/source/{UTILS}/a.cpp"

    def test_is_brought_up_to_date(self):
        self.assertEqual(self.read(self.copy), "one\n")
        self.write(f"{UTILS}/a.cpp", "three\n")
        os.remove(os.path.join(self.folder, "b"))
        self.workshop.update_copy()
        self.assertEqual(self.read(self.copy), "three\n")
        self.assertFalse(os.path.exists(os.path.join(self.workshop.copy, "b")))

    def test_what_has_not_changed_keeps_its_time(self):
        path = os.path.join(self.folder, self.copy)
        os.utime(path, (1000, 1000))
        self.workshop.update_copy()
        self.workshop.write_source("a.cpp", "one\n")
        self.assertEqual(os.stat(path).st_mtime, 1000)
        self.workshop.write_source("a.cpp", "four\n")
        self.assertEqual(self.read(self.copy), "four\n")
        self.assertGreater(os.stat(path).st_mtime, 1000)

    @unittest.skipUnless(shutil.which("c++"), "compiles")
    def test_faults_that_the_compiler_does_not_see(self):
        original = "int f(int a) { return a + 1; }\n"
        self.workshop.write_source("a.cpp", original)
        for text, same in ((original.replace("a + 1", "1 + a"), True), (original.replace("+", "-"), False)):
            self.assertEqual(self.workshop.is_same_code("a.cpp", text, original, ["a.cpp"]), same)
            self.assertEqual(self.read(self.copy), original)
        self.assertFalse(self.workshop.is_same_code("a.cpp", original, original, []))


if __name__ == "__main__":
    unittest.main()
