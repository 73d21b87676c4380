// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Answers the library's requests on the terminal, where a host with windows would open a dialog.
#pragma once

#include <string>

/// Installs the callback. `answer` ("yes", "no", "cancel") presses that button in every question;
/// if it is empty, the question is asked on standard input.
void installTerminalHost(const std::string& answer);

/// The number of questions that have been answered, by the user or by `answer`.
int answeredQuestions();
