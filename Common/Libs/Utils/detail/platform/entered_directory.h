// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Finds out what entering a directory would do without going there, because the working directory
// belongs to the whole process.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace kx::detail {

/// What getcwd(3) would return after the working directory had been changed to `directory` with
/// chdir(2):
///
///     cannot be entered                               -> nothing
///     has a name of more than `maxLength` characters,
///     is deleted, or lies outside the root directory  -> ""
///     any other directory                             -> its absolute path
///
/// The system itself is asked whether the directory may be entered, so access control lists and
/// capabilities count. This works even if the directories above it may not be searched (but then
/// the answer is "" in a working directory that has no path itself).
std::optional<std::string> directoryAfterEntering(const std::string& directory,
                                                  std::size_t maxLength);

// --- Differences between operating systems -------------------------------------------------------

/// A descriptor for looking at the directory, which needs no permission to read it; -1 if there is
/// none. It is closed when the process starts a program.
int openDirectory(const std::string& directory);

/// The path that the system gives for a descriptor, whatever its length; "" if it gives none.
std::string pathOfDescriptor(int descriptor);

}  // namespace kx::detail
