// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Keeps libFuzzer's own output and the sanitizers' reports on the console, whatever a target does
// with the standard streams.
#include <vector>

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments) {
    static char flag[] = "-close_fd_mask=3";
    static std::vector<char*> all(*arguments, *arguments + *count);
    all.push_back(flag);
    all.push_back(nullptr);
    ++*count;
    *arguments = all.data();
    return 0;
}
