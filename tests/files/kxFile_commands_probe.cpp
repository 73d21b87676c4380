// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxFile_commands_probe FIFO COMMAND: runs COMMAND with kxFile::execute_no_output while FIFO is the
// standard output of this process, which is not buffered.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

#include "kxFile.h"

int main(int argc, char** argv) {
    if (argc != 3) return 100;
    const int fifo = open(argv[1], O_RDWR);  // does not wait for a reader
    if (fifo < 0 || dup2(fifo, STDOUT_FILENO) < 0) return 101;
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    const int status = kxFile::execute_no_output(argv[2]);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 102;
}
