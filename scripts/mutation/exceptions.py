# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""The checked-in list of the faults that no test can notice."""
import re


def parse(text):
    """[(file, source, mutant)] of those that may survive. Keys hold until they are given anew, a reason until an
    empty line. Raises ValueError for a block without a reason and for a line that is none of these."""
    exceptions = []
    for block in re.split(r"\n{2,}", re.sub("(?m)^#.*\n", "", text).strip()):
        entry = dict.fromkeys(("reason", "file", "source"), "")
        for line in block.splitlines():
            key, _, value = line.partition(" ")
            if key == "mutant":
                exceptions.append((entry["file"], entry["source"], value.strip()))
            elif key in entry:
                entry[key] = value.strip()
            else:
                raise ValueError(f"not understood: {line}")
        if block and not entry["reason"]:
            raise ValueError(f"no reason for\n{block}")
    return exceptions


def stale(exceptions, faults):
    """The exceptions that name none of the faults, and those that are listed twice."""
    seen, result = set(), []
    for exception in exceptions:
        if exception in seen or exception not in faults:
            result.append(exception)
        seen.add(exception)
    return result


def entry(file, source, mutant):
    """A fault in the form of the list."""
    return f"file      {file}\nsource    {source}\nmutant    {mutant}\n"
