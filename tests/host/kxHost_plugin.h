// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What kxHost_plugin offers to the tests that load it.
#pragma once

#include "kxMessage.h"

/// A type of the application that crosses the border of a plug-in. The plug-in is built with hidden
/// symbols, so each side has its own copy of the type information.
struct SharedPoint {
    int x, y;
};

extern "C" {
/// Sets "number" (int 42), "text" (std::string "from the plug-in"), "point" (SharedPoint 3, 4) and
/// "local" (a type from the plug-in's own unnamed namespace, LocalValue{5}).
using FillMessage = void (*)(kxMessage&);
/// Reads "number" as an int and "point" as a SharedPoint; returns the sum of all, or -1.
using SumMessage = int (*)(const kxMessage&);
}
