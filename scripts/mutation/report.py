# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""The command line, the order of work, and the tables."""
import argparse
import collections
import fcntl
import hashlib
import json
import operator
import os
import signal
import sys
import time

from . import exceptions
from .faults import Source, key
from .ownership import Tree
from .programs import Judge, Runner, all_of
from .workshop import Workshop, protect_devices

TOGETHER = 100  # so many faults are built at once
COLUMNS = ["killed", "timed out", "survived", "listed", "same code", "does not compile"]


class Progress:
    """What became of the faults of each name."""

    def __init__(self, names):
        self.results = {name: collections.Counter() for name in names}
        self.seconds = dict.fromkeys(names, 0.0)

    def survived(self):
        return sum(results["survived"] for results in self.results.values())

    def table(self):
        yield "| | planted | " + " | ".join(COLUMNS) + " | noticed | seconds each |"
        yield "|---|" + "---:|" * (len(COLUMNS) + 3)
        for name, results in self.results.items():
            noticed = results["killed"] + results["timed out"]
            planted = sum(results.values())
            cells = [planted, *(results[column] for column in COLUMNS),
                     f"{100 * noticed / max(1, noticed + results['survived']):.1f} %",
                     f"{self.seconds[name] / max(1, planted):.1f}"]
            yield "| " + " | ".join([name, *map(str, cells)]) + " |"


def choose(mutants, count, seed):
    """So many of the faults, at random; all if `count` is None. In the order of the sources. Each fault draws its
    own number, so that a change of the code changes the choice by little."""
    def drawn(mutant):
        return hashlib.sha256("\n".join([str(seed), *key(mutant)]).encode()).digest()

    return sorted(sorted(mutants, key=drawn)[:count], key=operator.attrgetter("file", "begin", "end", "replacement"))


def read_survivors(path):
    if not os.path.exists(path):
        return []
    with open(path, encoding="utf-8") as file:
        return json.load(file)


def plant(wanted, listed, arguments, tree, sources, workshop):
    """Judges the chosen faults {name: mutants} and prints those that survive. Gives a Progress."""
    survivors = read_survivors(workshop.survivors_file)
    progress = Progress(wanted)
    name_of = {}
    for name, mutants in wanted.items():
        progress.results[name]["listed"] = sum(key(mutant) in listed for mutant in mutants)
        name_of.update((mutant.file, name) for mutant in mutants)
    chosen = [mutant for mutants in wanted.values() for mutant in mutants if key(mutant) not in listed]
    judge = Judge(workshop, Runner(workshop.programs), tree)
    done = 0
    for chunk in (chosen[i:i + TOGETHER] for i in range(0, len(chosen), TOGETHER)):
        used = {mutant.file: sources[mutant.file] for mutant in chunk}
        programs = {file: tree.programs_for(file) for file in used}
        start = time.monotonic()
        for mutant, result in judge.judge(used, chunk, programs, together=not arguments.again):
            progress.results[name_of[mutant.file]][result] += 1
            if list(key(mutant)) in survivors:
                survivors.remove(list(key(mutant)))
            if result == "survived":
                survivors.append(list(key(mutant)))
                print(f"\n{mutant.file}:{mutant.line}\nsource    {mutant.source}\nmutant    {mutant.mutant}",
                      flush=True)
            done += 1
            if sys.stderr.isatty():
                print(f"\r{name_of[mutant.file]} {done} of {len(chosen)}, {progress.survived()} survived ", end="",
                      file=sys.stderr)
        for mutant in chunk:  # what a build takes is shared
            progress.seconds[name_of[mutant.file]] += (time.monotonic() - start) / len(chunk)
        with open(workshop.survivors_file, "w", encoding="utf-8") as file:
            json.dump(survivors, file)
    return progress


def check_list(tree, sources):
    """The listed exceptions. Ends the program where a listed fault does not exist, or a source has no test."""
    path = os.path.join(tree.root, "tests", "mutation-exceptions.txt")
    with open(path, encoding="utf-8") as text:
        try:
            listed = exceptions.parse(text.read())
        except ValueError as error:
            sys.exit(f"{path}: {error}")
    faults = {key(mutant) for source in sources.values() for mutant in source.mutants()}
    if stale := exceptions.stale(listed, faults):
        sys.exit(f"{path}: no such fault, or twice:\n\n" + "\n".join(exceptions.entry(*one) for one in stale))
    if untested := tree.untested():
        sys.exit(f"mutate: no test program tests {', '.join(untested)}")
    return set(listed)


def main(root, description):
    parser = argparse.ArgumentParser(prog="mutate", description=description,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("names", nargs="*", metavar="NAME")
    parser.add_argument("--count", type=int, help="plant so many, chosen at random, of each name's faults")
    parser.add_argument("--seed", type=int, default=1, help="of that choice")
    parser.add_argument("--again", action="store_true", help="plant only those that have survived before")
    parser.add_argument("--list", action="store_true", help="print the faults, plant none")
    arguments = parser.parse_args()

    tree = Tree(root)
    sources = {file: Source(file, tree.read(file)) for file in tree.sources}
    try:
        groups = tree.counted_for(arguments.names or [*tree.class_names, *tree.rooms])
    except LookupError as error:
        sys.exit(f"mutate: {error.args[0]}")
    listed = check_list(tree, sources)
    wanted = {name: [mutant for file in files for mutant in sources[file].mutants()]
              for name, files in groups.items()}
    workshop = Workshop(root)
    if arguments.again:
        survivors = read_survivors(workshop.survivors_file)
        wanted = {name: [mutant for mutant in mutants if list(key(mutant)) in survivors]
                  for name, mutants in wanted.items()}
    wanted = {name: choose(mutants, arguments.count, arguments.seed) for name, mutants in wanted.items()}
    if arguments.list:
        signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # for head
        for mutant in (mutant for mutants in wanted.values() for mutant in mutants):
            print(f"{mutant.file}:{mutant.line}\n- {mutant.source}\n+ {mutant.mutant}")
        return
    os.makedirs(workshop.folder, exist_ok=True)
    with open(workshop.lock_file, "w", encoding="ascii") as lock:
        fcntl.flock(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
        protect_devices()
        workshop.update_copy()
        workshop.configure()
        files = {mutant.file for mutants in wanted.values() for mutant in mutants}
        done, output = workshop.build(all_of({file: tree.programs_for(file) for file in files}))
        if not done:
            sys.exit(output)
        progress = plant(wanted, listed, arguments, tree, sources, workshop)
    print("\n" + "\n".join(progress.table()))
    if progress.survived():
        sys.exit(1)
