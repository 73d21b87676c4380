// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Answers the library's requests on the terminal, where a host with windows would open a dialog.
#pragma once

#include <string>

/// Installs the callback. `answer` ("yes", "no", "cancel") presses that button in every question;
/// empty asks on standard input.
void installTerminalHost(const std::string& answer);

/// The questions that have been answered, by the user or by `answer`.
int answeredQuestions();
