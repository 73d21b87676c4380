# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""Which class or room a source belongs to, and which test programs test it: read from folders, names and #includes.

A class is NAME.cpp and NAME.h, a room a folder of detail/. A source belongs to the classes that reach it: by
#include, or because it implements an internal header that they reach. Nothing is followed into another class.

A program tests
- the class that it is named after (kxFile_paths_test), with everything that belongs to this class,
- the room that it is named after (log_file_test),
- the internals that it includes; where it links the object files, what implements them, too,
- instead of these the units that it compiles itself, and what they include,
- the classes whose headers it includes, where its name is not that of a class or room.
"""
import fnmatch
import os
import re

UTILS = os.path.join("Common", "Libs", "Utils")
ROOM = re.compile(r"detail/[^/]+$")

# Not compiled on this system, and the shaders' blocks: data that a tool makes and a test compares.
FAULTLESS = re.compile(r"/darwin/|_none\.cpp$|_portable\.cpp$|^shader/")

# These run last, on what survives the others: they take longest, and notice faults in the locking, or where memory or
# the system fails. A source needs another test as well.
LAST = {"faults_test", "kxLog_processes_test", "kxLog_threads_test", "threads_test"}


class Program:
    """A test program: its folder, whether it links the object files, and the files that it is compiled from."""

    def __init__(self, name, internal=False, sources=(), folder=""):
        self.name = name
        self.internal = internal
        self.folder = folder  # in tests/
        self.sources = [f"{name}.cpp", *sources]  # in that folder
        self.units = []  # of the library, compiled into the program


def read_programs(text, names):
    """The programs of a CMakeLists.txt that are built without the examples and tools; `names` are all there are."""
    programs = {name: Program(name) for name in names}
    conditions = []
    for word, arguments in re.findall(r"(?ms)^ *(if|endif|kx_test)\(((?:[^()]|\([^()]*\))*)\)",
                                      re.sub("#[^\n]*", "", text)):
        if word == "if":
            conditions.append(arguments)
        elif word == "endif":
            conditions.pop()
        elif any("KXUTILS_BUILD_" in condition for condition in conditions):
            for name in fnmatch.filter(names, re.sub(r"\$\{\w+\}", "*", arguments.split()[0])):
                programs.pop(name, None)
        elif arguments.split()[0] in programs:
            name, *words = arguments.replace('"', "").split()
            program = programs[name]
            program.internal = "INTERNAL" in words
            files = [word for word in words if word.endswith(".cpp")]
            program.sources += [file for file in files if "$" not in file]
            program.units += [file.replace("${kx_detail}", "detail") for file in files if "${kx_detail}" in file]
    return programs


class Tree:
    """The sources of the library and its test programs, in the folder `root`."""

    def __init__(self, root):
        self.root = root
        self.utils = os.path.join(root, UTILS)
        self.tests = os.path.join(root, "tests")
        found = sorted(os.path.relpath(os.path.join(folder, name), self.utils)
                       for folder, _, names in os.walk(self.utils) for name in names
                       if name.endswith((".cpp", ".h")))
        self.sources = [file for file in found if not FAULTLESS.search(file)]
        self.includes = {file: self._included(os.path.join(self.utils, file), self.utils, self.sources)
                         for file in self.sources}
        self.class_names = [os.path.splitext(file)[0] for file in self.sources if re.fullmatch(r"\w+\.cpp", file)]
        self.rooms = sorted({os.path.dirname(re.match("detail/[^/]+/?", file).group())
                             for file in self.sources if file.count("/") > 1})
        self._implementers = self._find_implementers()
        self.classes = {name: self._belongs_to(name) for name in self.class_names}
        self._find_programs()

    def read(self, file):
        with open(os.path.join(self.utils, file), encoding="utf-8") as source:
            return source.read()

    def owners(self, file):
        """The classes that a source belongs to."""
        return [name for name, files in self.classes.items() if file in files]

    def counted_for(self, names):
        """{name: its sources} for classes, rooms and sources; a source is counted once, for the narrowest name."""
        groups = [(name, *self._named(name)) for name in names]
        counted = set()
        result = {}
        for name, rank, files in sorted(groups, key=lambda group: group[1]):
            result[name] = [file for file in files if file not in counted]
            counted.update(files)
        return {name: result[name] for name in names}

    def programs_for(self, file):
        """The programs that test a source, and those that run last."""
        programs = self._programs_for[file]
        return programs - LAST, programs & LAST

    def untested(self):
        """The sources without a test program: no fault in them could be noticed."""
        return [file for file in self.sources if not self.programs_for(file)[0]]

    def compiled_for(self, file):
        """The units that have to be compiled to see what a source becomes. For a public header there are none: its
        users compile it."""
        if file.endswith(".cpp"):
            return [file]
        if not file.startswith("detail/"):
            return []
        return [unit for unit in self.sources if unit.endswith(".cpp") and file in self._reached({unit})]

    def _named(self, name):
        """How wide a name is, and what it stands for."""
        if name in self.class_names:
            return 2, [file for file in self.classes[name] if self.owners(file)[0] == name]
        file = os.path.relpath(os.path.realpath(name), self.utils) if os.path.exists(name) else name.rstrip("/")
        if file in self.sources:
            return 0, [file]
        inside = [source for source in self.sources if source.startswith(file + "/")]
        if not inside:
            raise LookupError(f"no class, no room and no source of one: {name}")
        return 1, inside

    @staticmethod
    def _included(path, root, known, folders=("",)):
        """Which of the known files in a folder a file includes: beside itself, or in one of the searched folders."""
        with open(path, encoding="utf-8") as source:
            names = re.findall(r'(?m)^#include "([^"]+)"', source.read())
        here = os.path.relpath(os.path.dirname(path), root)
        found = {next((way for way in (os.path.normpath(os.path.join(folder, name)) for folder in (here, *folders))
                       if way in known), None) for name in names}
        return found - {None}

    @staticmethod
    def _room(file):
        return "/".join(file.split("/")[:2]) if file.count("/") > 1 else os.path.dirname(file)

    def _find_implementers(self):
        """{internal header: the units that define what it declares}: the one of its name, which may lie in a folder
        for an operating system, and those of its room that have no header of their own."""
        result = {}
        for unit in self.sources:
            if not unit.startswith("detail/") or unit.endswith(".h"):
                continue
            neighbours = {file for file in self.includes[unit] if self._room(file) == self._room(unit)}
            stem = os.path.splitext(os.path.basename(unit))[0]
            own = {file for file in neighbours if os.path.basename(file) == stem + ".h"}
            for header in own or neighbours:
                result.setdefault(header, set()).add(unit)
        return result

    def _reached(self, files, through=lambda file: True, implemented=False):
        """Files and what they include, which `through` may refuse; also what implements it, if asked for."""
        reached, waiting = set(), list(files)
        while waiting:
            file = waiting.pop()
            if file in reached or not through(file):
                continue
            reached.add(file)
            waiting += self.includes[file]
            if implemented:
                waiting += self._implementers.get(file, ())
        return reached

    def _is_of_class(self, file):
        return os.path.splitext(file)[0] in self.class_names

    def _belongs_to(self, name):
        own = [file for file in (f"{name}.cpp", f"{name}.h") if file in self.sources]
        reached = self._reached(own, lambda file: file in own or not self._is_of_class(file), implemented=True)
        return own + sorted(reached.difference(own))

    def _find_programs(self):
        self._programs_for = {file: set() for file in self.sources}
        for folder, _, files in os.walk(self.tests):
            if "CMakeLists.txt" not in files:
                continue
            names = sorted(os.path.splitext(file)[0] for file in files if file.endswith("_test.cpp"))
            with open(os.path.join(folder, "CMakeLists.txt"), encoding="utf-8") as text:
                programs = read_programs(text.read(), names)
            for program in programs.values():
                program.folder = os.path.relpath(folder, self.tests)
                for file in self._tested_by(program):
                    self._programs_for[file].add(program.name)

    def _tested_by(self, program):
        def is_named_after(name):
            return re.fullmatch(re.escape(name) + "(_.+)?_test", program.name)

        tested = set()
        for name in filter(is_named_after, self.class_names):
            tested.update(self.classes[name])
        for room in self.rooms:
            if is_named_after(os.path.basename(room)):
                tested.update(file for file in self.sources if file.startswith(room + "/"))
        has_name = bool(tested)
        included = self._included_by_test(program)
        if not has_name:
            for file in filter(self._is_of_class, included):
                tested.update(self.classes[os.path.splitext(file)[0]])
        if program.units:
            internal = [unit for unit in program.units if unit in self.sources]
        else:
            internal = [file for file in included if file.startswith("detail/")]
        tested |= self._reached(internal, lambda file: not self._is_of_class(file), program.internal)
        return tested

    def _included_by_test(self, program):
        """What of the library a program's sources include, and the headers in tests/ that they include."""
        library, seen = set(), set()
        waiting = [os.path.normpath(os.path.join(program.folder, file)) for file in program.sources]
        helpers = [os.path.relpath(os.path.join(folder, name), self.tests)
                   for folder, _, names in os.walk(self.tests) for name in names if name.endswith(".h")]
        while waiting:
            file = waiting.pop()
            path = os.path.join(self.tests, file)
            if file in seen or not os.path.exists(path):
                continue
            seen.add(file)
            library |= self._included(path, self.utils, self.sources)
            waiting += self._included(path, self.tests, helpers, ("", "support"))
        return library
