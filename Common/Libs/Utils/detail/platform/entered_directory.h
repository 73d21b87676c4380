// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What entering a directory would do, found out without going there: the working directory belongs
// to the whole process.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace kx::detail {

/// What the working directory would read as (getcwd(3)) after it was changed to `directory`
/// (chdir(2)).
///
///     cannot be entered                               -> nothing
///     has a name of more than `maxLength` characters,
///     is deleted, or lies outside the root directory  -> ""
///     any other directory                             -> its absolute path
///
/// The system itself is asked whether the directory may be entered, so that access control lists
/// and capabilities count; also where the directories above it may not be searched (but then the
/// answer is "" from a working directory that has no path itself).
std::optional<std::string> directoryAfterEntering(const std::string& directory,
                                                  std::size_t maxLength);

// --- What differs between operating systems ------------------------------------------------------

/// A descriptor of the directory for looking at it, which needs no permission to read it; -1 where
/// there is none. It closes when the process starts a program.
int openDirectory(const std::string& directory);

/// The path that the system gives for a descriptor, of whatever length; "" if it gives none.
std::string pathOfDescriptor(int descriptor);

}  // namespace kx::detail
