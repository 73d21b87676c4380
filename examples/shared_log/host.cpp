// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A host that loads a plug-in. Both link the same libkxUtils, so there is a single log: a message
// of the plug-in arrives at the host's callback.
//
//     shared_log_host PLUG-IN
#include <iostream>

#include <kxLog.h>
#include <kxUtils.h>

namespace {

void count(const char* text) { std::cout << "the host has received: " << text << '\n'; }

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    kxLog::setWarningCB(count);

    void* const plugin = kxUtils::loadSharedLibrary(argv[1], /*lazy=*/false);
    if (!plugin) {
        std::cerr << kxUtils::getLastError() << '\n';
        return 1;
    }
    using Run = void (*)();
    const auto run = reinterpret_cast<Run>(kxUtils::resolveSymbol(plugin, "run"));
    if (!run) {
        std::cerr << kxUtils::getLastError() << '\n';
        return 1;
    }
    run();

    kxLog::setWarningCB(nullptr);
    kxUtils::unloadSharedLibrary(plugin);
    return std::cout.flush() ? 0 : 1;  // the terminal may be a full disk
}
