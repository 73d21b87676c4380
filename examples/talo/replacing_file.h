// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files that take the place of others when they are complete.
#pragma once

#include <string>

#include "open_file.h"

/// A new file beside `target`, under a name of its own; removed unless commit() succeeds. Whatever
/// fails meanwhile, `target` is as it was. A link there is replaced, not followed.
class ReplacingFile {
public:
    /// `mode`: its permissions, less the umask.
    ReplacingFile(std::string target, mode_t mode);
    ~ReplacingFile();  ///< errno stays that of an earlier failure
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    /// To write to. Not open if it could not be created: errno says why.
    OpenFile& file() { return _file; }

    /// Closes it and gives it the target's name. True only if the system has accepted all that was
    /// written; otherwise errno says why not.
    bool commit();

private:
    std::string _target, _path;
    OpenFile _file;
    bool _isThere = false;
};
