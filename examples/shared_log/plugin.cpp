// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The plug-in for host.cpp.
#include <kxLog.h>

extern "C" __attribute__((visibility("default"))) void run() {
    kxLog::warning("%d textures missing", 2);
}
