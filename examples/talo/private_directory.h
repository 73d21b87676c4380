// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A place for temporary files that nobody else can reach.
#pragma once

#include <string>

/// Whether users other than this one and the super-user may create files in a directory; true also
/// if that cannot be told.
bool canOthersWrite(const std::string& directory);

/// A directory below kxFile::getTmpDir() that only this user can enter.
///
/// The library's directory is shared: everybody can tell its path, and may have put links there
/// that lead anywhere, under names that we are going to use. What is written into it by name is
/// written wherever such a link leads. In a directory that mkdtemp() has made there is nothing yet,
/// and nobody else can put anything there.
class PrivateDirectory {
public:
    /// Logs an error if it cannot be made.
    PrivateDirectory();
    /// As remove(), but silent.
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    /// "" if there is none.
    const std::string& path() const { return _path; }

    /// Removes it, and the files registered with kxFile::addTmpFile(). False, with an error in the
    /// log, if it stays.
    bool remove();

private:
    std::string _path;
};
