# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""The copy of the tree that faults are planted into, and its build."""
import ctypes
import os
import shutil
import subprocess
import sys
import tempfile

from .ownership import UTILS


class Workshop:
    """Folders in build/mutate that stay for the next run."""

    def __init__(self, root):
        self.root = root
        self.folder = os.path.join(root, "build", "mutate")
        self.copy = os.path.join(self.folder, "source")
        self.build_folder = os.path.join(self.folder, "build")
        self.programs = os.path.join(self.build_folder, "tests")
        self.number_file = os.path.join(self.folder, "number")
        self.survivors_file = os.path.join(self.folder, "survivors.json")
        self.lock_file = os.path.join(self.folder, "lock")

    def update_copy(self):
        """Brings the copy up to date; files that have not changed keep their time, so that little is built."""
        listing = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"],
                                 cwd=self.root, check=True, stdout=subprocess.PIPE, text=True).stdout
        names = {name for name in listing.split("\0") if name and os.path.isfile(os.path.join(self.root, name))}
        for name in names:
            source, target = os.path.join(self.root, name), os.path.join(self.copy, name)
            with open(source, "rb") as file:
                content = file.read()
            if os.path.exists(target):
                with open(target, "rb") as file:
                    if file.read() == content:
                        continue
            os.makedirs(os.path.dirname(target), exist_ok=True)
            shutil.copyfile(source, target)
            shutil.copymode(source, target)
        for folder, _, files in os.walk(self.copy):
            for name in files:
                if os.path.relpath(os.path.join(folder, name), self.copy) not in names:
                    os.remove(os.path.join(folder, name))

    def configure(self):
        linker = " -fuse-ld=lld" if shutil.which("ld.lld") else ""
        subprocess.run(["cmake", "-S", self.copy, "-B", self.build_folder, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=",
                        f"-DCMAKE_CXX_FLAGS=-O1 -w{linker}", "-DCMAKE_LINK_DEPENDS_NO_SHARED=ON",
                        "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", "-DKXUTILS_BUILD_BENCHMARKS=OFF",
                        "-DKXUTILS_BUILD_EXAMPLES=OFF", "-DKXUTILS_BUILD_TOOLS=OFF", "-DKXUTILS_INSTALL=OFF",
                        *(["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else [])],
                       check=True, stdout=subprocess.DEVNULL)

    def build(self, programs, **environment):
        """True if the library and these programs could be built, and what the build says."""
        cores = len(os.sched_getaffinity(0))
        result = subprocess.run(["cmake", "--build", self.build_folder, f"-j{cores}", "--target", "kxUtils",
                                 *sorted(programs)], timeout=1800, env={**os.environ, **environment},
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        return result.returncode == 0, result.stdout

    def write_source(self, file, text):
        """Changes a source of the copy; one that is not different keeps its time, so that it is not built."""
        path = os.path.join(self.copy, UTILS, file)
        with open(path, encoding="utf-8") as source:
            if source.read() == text:
                return
        with open(path, "w", encoding="utf-8") as source:
            source.write(text)

    def choose(self, number):
        """Of many faults that are built together this one is effective; 0 stands for none."""
        with open(self.number_file, "w", encoding="ascii") as file:
            file.write(str(number))

    def is_same_code(self, file, text, original, units):
        """True if the compiler, with full optimisation, makes of the units what it makes without the change."""
        if not units:
            return False
        self.write_source(file, text)
        try:
            changed = self._objects(units)
        finally:
            self.write_source(file, original)
        return self._objects(units) == changed

    def _objects(self, units):
        folder = os.path.join(self.copy, UTILS)
        with tempfile.TemporaryDirectory() as work:
            out, results = os.path.join(work, "out.o"), []
            for unit in units:
                subprocess.run(["c++", "-std=c++17", "-O2", "-w", "-fPIC", "-fvisibility=hidden", "-I", folder,
                                "-c", os.path.join(folder, unit), "-o", out], check=True)
                with open(out, "rb") as result:
                    results.append(result.read())
            return results


def protect_devices():
    """For this process and what it starts, /dev cannot be changed: faults may remove what they are given."""
    new_mounts = 0x20000  # CLONE_NEWNS
    if os.geteuid() == 0 and ctypes.CDLL(None).unshare(new_mounts) == 0:
        for options in (["--make-rprivate", "/"], ["--bind", "/dev", "/dev"], ["-o", "remount,bind,ro", "/dev"]):
            if subprocess.run(["mount", *options], check=False).returncode != 0:
                sys.exit("mutate: /dev could not be protected from the faults")
