// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A place for temporary files that nobody else can reach.
#pragma once

#include <string>

/// Whether users other than this one and the super-user may create files in a directory; true also
/// if that cannot be found out.
bool canOthersWrite(const std::string& directory);

/// A directory below kxFile::getTmpDir() that only this user can enter.
///
/// The directory of kxFile::getTmpDir() is shared. Everybody can tell its path, and may have put
/// links there that lead anywhere, under names that we are going to use. What is written there
/// under such a name ends up wherever the link leads. A directory that mkdtemp() has made is empty,
/// and nobody else can put anything into it.
class PrivateDirectory {
public:
    /// Logs an error if the directory cannot be made.
    PrivateDirectory();
    /// Like remove(), but silent.
    ~PrivateDirectory();
    PrivateDirectory(const PrivateDirectory&) = delete;
    PrivateDirectory& operator=(const PrivateDirectory&) = delete;

    /// "" if there is none.
    const std::string& path() const { return _path; }

    /// Removes the directory and the files registered with kxFile::addTmpFile(). Returns false,
    /// with an error in the log, if the directory stays.
    bool remove();

private:
    std::string _path;
};
