// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files that replace others once they are complete.
#pragma once

#include <string>

#include "open_file.h"

/// A new file beside `target` with its own name, which is removed unless commit() succeeds.
/// Whatever fails meanwhile, `target` stays as it was. A link at `target` is replaced, not
/// followed.
class ReplacingFile {
public:
    /// `mode` is its permissions, less the umask.
    ReplacingFile(std::string target, mode_t mode);
    ~ReplacingFile();  ///< keeps the errno of an earlier failure
    ReplacingFile(const ReplacingFile&) = delete;
    ReplacingFile& operator=(const ReplacingFile&) = delete;

    /// The file to write to. It is not open if it could not be created; errno says why.
    OpenFile& file() { return _file; }

    /// Closes the file and gives it the target's name. Returns true only if the system has accepted
    /// everything that was written; otherwise errno says why not.
    bool commit();

private:
    std::string _target, _path;
    OpenFile _file;
    bool _isThere = false;
};
