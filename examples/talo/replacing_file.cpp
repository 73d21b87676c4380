// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "replacing_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "kxFile.h"

ReplacingFile::ReplacingFile(std::string target, mode_t mode) : _target(std::move(target)) {
    std::string directory = kxFile::getFilePath(_target);
    if (directory.empty()) directory = "/";  // for "/file"
    const std::string prefix = ".talo" + std::to_string(getpid()) + '-';
    for (int attempts = 0; attempts < 100; ++attempts) {
        // getTmpName() only looks for a free name; creating the file makes the name ours.
        _path = directory + '/' + kxFile::getTmpName(directory, prefix);
        _file = createNew(_path, mode);
        _isThere = static_cast<bool>(_file);
        if (_isThere || errno != EEXIST) return;
    }
}

ReplacingFile::~ReplacingFile() {
    const int error = errno;
    if (_isThere) unlink(_path.c_str());
    errno = error;
}

// The result of close() counts, since some file systems do not notice earlier that they cannot keep
// the bytes.
bool ReplacingFile::commit() {
    if (!_file.close() || std::rename(_path.c_str(), _target.c_str()) != 0) return false;
    _isThere = false;
    return true;
}
