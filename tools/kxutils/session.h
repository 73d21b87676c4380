// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What a sub-command works with, and the list of them all.
#pragma once

#include <CLI/App.hpp>
#include <functional>
#include <string_view>

#include "arguments.h"
#include "report.h"

/// One run of the program.
struct Session {
    explicit Session(int standardOutput) : out(standardOutput), report(out, progress) {}

    Writer out;  ///< standard output, for results that are no lines
    Progress progress;
    Report report;

    /// Counts bytes that the main thread has worked on.
    void advance(std::uint64_t bytes) {
        progress.add(bytes);
        progress.update();
    }

    /// Calls `use` with the rest of an input, in blocks that are full (blockSize) but the last.
    void readBlocks(Input& input, const std::function<void(std::string_view)>& use);
};

/// The work of a sub-command, once its options are known.
using Work = std::function<void()>;

// Each declares the options of one sub-command and returns its work. A text that contains an
// example closes the help.
Work addBase64(CLI::App& app, Session& session);
Work addCpu(CLI::App& app, Session& session);
Work addCrc(CLI::App& app, Session& session);
Work addDirs(CLI::App& app, Session& session);
Work addInspect(CLI::App& app, Session& session);
Work addLabel(CLI::App& app, Session& session);
Work addLog(CLI::App& app, Session& session);
Work addNumber(CLI::App& app, Session& session);
Work addPath(CLI::App& app, Session& session);
Work addSelftest(CLI::App& app, Session& session);
Work addShader(CLI::App& app, Session& session);
Work addStamp(CLI::App& app, Session& session);
Work addTmp(CLI::App& app, Session& session);
Work addVerify(CLI::App& app, Session& session);

/// Adds -z, for sub-commands whose results are lines with names.
void addZeroOption(CLI::App& app, Session& session);
