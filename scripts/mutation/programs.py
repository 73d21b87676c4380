# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""Runs test programs on faults and judges what they say."""
import collections
import itertools
import os
import re
import resource
import shutil
import signal
import subprocess
import sys
import tempfile

from .choices import with_all


class Runner:
    """Runs the test programs of a folder, and remembers what they cost and notice."""

    def __init__(self, folder):
        self.folder = folder
        self.seconds = {}
        self.noticed = collections.Counter()

    def measure(self, programs):
        """The programs that fail, which should be none without a fault."""
        failed = []
        for program in sorted(programs):
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            if self._run(program) != "survived":
                failed.append(program)
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
            self.seconds[program] = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        return failed

    def run(self, programs, last=()):
        """Runs those first that notice much for their time. Gives killed, timed out or survived."""
        def cost(program):
            return self._limit(program) / (1 + self.noticed[program]), program

        for program in sorted(programs, key=cost) + sorted(last, key=cost):
            result = self._run(program)
            if result != "survived":
                self.noticed[program] += 1
                return result
        return "survived"

    def _limit(self, program):
        return self.seconds.get(program, 60.0)

    def _run(self, program):
        limit = self._limit(program)

        def restrict():
            # Processor time is what a busy machine does not stretch.
            resource.setrlimit(resource.RLIMIT_CPU, (int(4 * limit) + 2,) * 2)
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            with open("/proc/self/oom_score_adj", "w", encoding="ascii") as score:
                score.write("1000")  # a fault that takes all memory ends only itself

        folder = tempfile.mkdtemp()
        os.chmod(folder, 0o755)  # tests work as another user in it
        process = subprocess.Popen([os.path.join(self.folder, program), "--gtest_fail_fast", "--gtest_brief=1"],
                                   cwd=folder, env={**os.environ, "TMPDIR": folder}, preexec_fn=restrict,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                   start_new_session=True)
        try:
            status = process.wait(timeout=20 * limit + 20)
        except subprocess.TimeoutExpired:
            status = -signal.SIGXCPU
        try:
            os.killpg(process.pid, signal.SIGKILL)  # what it has started, or itself
        except ProcessLookupError:
            pass
        process.wait()
        shutil.rmtree(folder, ignore_errors=True)
        if status in (-signal.SIGXCPU, -signal.SIGKILL):
            return "timed out"
        return "killed" if status != 0 else "survived"


class Judge:
    """Plants faults into the workshop's copy and says how each went: killed, timed out, survived, same code, or
    does not compile."""

    def __init__(self, workshop, runner, tree):
        self.workshop = workshop
        self.runner = runner
        self.tree = tree

    def judge(self, sources, mutants, programs, together=True):
        """Yields (mutant, result) of all `mutants`. `sources` {file: Source} are theirs, `programs` those that test
        them: {file: (names, names of those that run last)}. `together` builds as many as possible at once."""
        numbered = dict(enumerate(mutants, 1))
        results = self._together(sources, numbered, programs) if together else {}
        if not results:
            every = all_of(programs)
            self.workshop.build(every)
            if failed := self.runner.measure(every):
                sys.exit(f"mutate: without any fault fail {', '.join(failed)}")
        for number, mutant in numbered.items():
            source = sources[mutant.file]
            result = results.get(number) or self._alone(source, mutant, programs[mutant.file])
            if result == "survived" and self.workshop.is_same_code(
                    mutant.file, source.with_fault(mutant), source.text, self.tree.compiled_for(mutant.file)):
                result = "same code"
            yield mutant, result

    def _alone(self, source, mutant, programs):
        try:
            self.workshop.write_source(mutant.file, source.with_fault(mutant))
            if not self.workshop.build(all_of({0: programs}), CCACHE_DISABLE="1")[0]:  # nobody builds that again
                return "does not compile"
            return self.runner.run(*programs)
        finally:
            self.workshop.write_source(mutant.file, source.text)

    def _together(self, sources, mutants, programs):
        """{number: result} of those {number: mutant} that could be built into one library, and of no others."""
        results = {}
        every = all_of(programs)
        try:
            while True:
                numbers = []
                for file, source in sources.items():
                    text, inside = with_all(source, {number: mutant for number, mutant in mutants.items()
                                                     if mutant.file == file and number not in results},
                                            self.workshop.number_file)
                    self.workshop.write_source(file, text if inside else source.text)
                    numbers += inside
                done, output = self.workshop.build((), CCACHE_DISABLE="1")
                if done:  # the programs only once: many include the headers
                    done, output = self.workshop.build(every, CCACHE_DISABLE="1")
                if done:
                    break
                wrong = wrong_numbers(output)
                if not wrong:
                    print("each fault is built by itself:", output, file=sys.stderr)
                    return {}
                results.update(dict.fromkeys(wrong, "does not compile"))

            self.workshop.choose(0)
            if failed := self.runner.measure(every):
                print("each fault is built by itself:", *failed, "notice the choices", file=sys.stderr)
                return {}
            for number in numbers:
                self.workshop.choose(number)
                results[number] = self.runner.run(*programs[mutants[number].file])
            return results
        finally:
            for file, source in sources.items():
                self.workshop.write_source(file, source.text)


def all_of(programs):
    return set(itertools.chain.from_iterable(itertools.chain.from_iterable(programs.values())))


def wrong_numbers(output):
    """Which of the faults that were built together the compiler refuses."""
    return {int(number) for number in re.findall(r"(?m)^mutant-(\d+):\d+:\d+: (?:fatal )?error", output)}
