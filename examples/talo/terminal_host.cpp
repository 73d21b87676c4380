// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "terminal_host.h"

#include <cstdio>
#include <cstring>
#include <iostream>
#include <vector>

#include "kxMessage.h"
#include "kxUtils.h"

namespace {

// The callback is a plain function, so the data it needs is kept here.
std::string fixedAnswer;
int answered = 0;

// "&Yes" becomes "yes": the "&" marks the accelerator, and the case of the typed answer does not
// matter.
std::string plainLabel(const std::string& label) {
    std::string plain;
    for (const char c : label)
        if (c != '&') plain += static_cast<char>(c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c);
    return plain;
}

// The index of the button with a label that begins with `answer`; `otherwise` if there is none.
int findButton(const std::vector<std::string>& labels, const std::string& answer, int otherwise) {
    for (std::size_t i = 0; i < labels.size(); ++i)
        if (plainLabel(labels[i]).rfind(plainLabel(answer), 0) == 0) return static_cast<int>(i);
    return otherwise;
}

int askUser(const std::vector<std::string>& labels, int defaultButton, int escapeButton) {
    if (!fixedAnswer.empty()) return findButton(labels, fixedAnswer, escapeButton);
    if (!std::cerr) return escapeButton;  // nobody has seen the question
    std::string line;
    if (!std::getline(std::cin, line)) return escapeButton;  // nobody is there to ask
    if (line.empty()) return defaultButton;
    return findButton(labels, line, escapeButton);
}

// The library has one request. A host that shows nothing would return false, and the library would
// take the first answer.
bool answerRequest(const char* request, kxMessage& message, int /*flags*/) {
    if (std::strcmp(request, "showMainWarning") != 0) return false;

    std::string text;
    getFromMessage(message, "text", text);
    std::cerr << text;

    // A question comes with its buttons; a plain notice has none.
    std::vector<std::string> labels;
    std::string label;
    while (getFromMessage(message, "button" + std::to_string(labels.size()), label))
        labels.push_back(label);
    if (labels.empty()) {
        std::cerr << '\n';
        return true;
    }

    for (std::size_t i = 0; i < labels.size(); ++i)
        std::cerr << (i == 0 ? " [" : "/") << plainLabel(labels[i]);
    std::cerr << "] ";
    int defaultButton = 0, escapeButton = 0;
    getFromMessage(message, "default button", defaultButton);
    getFromMessage(message, "escape button", escapeButton);
    const int button = askUser(labels, defaultButton, escapeButton);
    if (!fixedAnswer.empty()) std::cerr << fixedAnswer << '\n';

    // The reply goes into the same record, as an int.
    message.set("button", button, /*overwrite=*/true);
    ++answered;
    return true;
}

}  // namespace

void installTerminalHost(const std::string& answer) {
    fixedAnswer = answer;
    kxUtils::init(answerRequest);
}

int answeredQuestions() { return answered; }
