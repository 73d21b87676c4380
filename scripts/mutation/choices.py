# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT
"""Many faults in one text: each body of a function becomes a choice between itself and its faulty copies."""

# Programs that tests run have an environment of their own: the number is read from a file.
CHOICE = """#ifndef KX_MUTANT
#define KX_MUTANT
#include <fcntl.h>
#include <unistd.h>
inline int readNumberOfMutant() {
    int number = 0;
    const int file = open("%s", O_RDONLY | O_CLOEXEC);
    for (char c; file >= 0 && read(file, &c, 1) == 1;) number = 10 * number + (c - '0');
    if (file >= 0) close(file);
    return number;
}
inline const int kx_mutant = readNumberOfMutant();
#endif
"""


def with_all(source, mutants, number_file):
    """The text of a source with faults {number: mutant} of which that one is effective whose number stands in the
    file when the program starts, and the numbers of those in it: faults outside of functions are left out."""
    line = f'\n#line {{}} "{source.file}"\n'
    text, after, numbers = [CHOICE % number_file, line.format(1)], 0, []
    for begin, end in source.bodies():
        inside = [number for number, mutant in mutants.items() if begin <= mutant.begin and mutant.end <= end]
        if not inside:
            continue
        text.append(source.text[after:begin])
        for number in inside:
            mutant = mutants[number]
            text += [f'if (kx_mutant == {number}) {{\n#line 1 "mutant-{number}"\n',
                     source.text[begin:mutant.begin], mutant.replacement, source.text[mutant.end:end], "} else "]
        text += ["{", line.format(source.text.count("\n", 0, begin) + 1), source.text[begin:end], "}"]
        after = end
        numbers += inside
    return "".join(text) + source.text[after:], numbers
