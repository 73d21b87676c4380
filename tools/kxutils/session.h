// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What sub-commands work with, and the list of all sub-commands.
#pragma once

#include <functional>
#include <string_view>

#include "arguments.h"
#include "report.h"

/// One run of the program.
struct Session {
    explicit Session(int standardOutput) : out(standardOutput), report(out, progress) {}

    Writer out;  ///< standard output, for results that are not lines
    Progress progress;
    Report report;

    /// Counts bytes that the main thread has processed.
    void advance(std::uint64_t bytes) {
        progress.add(bytes);
        progress.update();
    }

    /// Calls `use` with the rest of an input, in full blocks (blockSize) except for the last.
    void readBlocks(Input& input, const std::function<void(std::string_view)>& use);
};

/// The work of a sub-command, once its options are known.
using Work = std::function<void()>;

// Each function declares the options of one sub-command and returns its work. The help ends with a
// text that contains an example.
Work addBase64(Arguments& arguments, Session& session);
Work addCpu(Arguments& arguments, Session& session);
Work addCrc(Arguments& arguments, Session& session);
Work addDirs(Arguments& arguments, Session& session);
Work addInspect(Arguments& arguments, Session& session);
Work addLabel(Arguments& arguments, Session& session);
Work addLog(Arguments& arguments, Session& session);
Work addNumber(Arguments& arguments, Session& session);
Work addPath(Arguments& arguments, Session& session);
Work addSelftest(Arguments& arguments, Session& session);
Work addShader(Arguments& arguments, Session& session);
Work addStamp(Arguments& arguments, Session& session);
Work addTmp(Arguments& arguments, Session& session);
Work addVerify(Arguments& arguments, Session& session);

/// Adds -z, for sub-commands whose results are lines with names.
void addZeroOption(Arguments& arguments, Session& session);
