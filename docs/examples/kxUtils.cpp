// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A host's callback, and a plug-in's request to it.
#include <cstring>
#include <iostream>
#include <string>

#include <kxUtils.h>

// True for a request that this host knows; the reply goes into the record.
static bool answer(const char* request, kxMessage& message, int /*flags*/) {
    if (std::strcmp(request, "getSceneName") != 0) return false;
    message.set("name", std::string("engine"), /*overwrite=*/true);
    return true;
}

int main() {
    kxMessage message;
    std::cout << kxUtils::call("getSceneName", message) << '\n';  // no host yet

    kxUtils::init(answer);
    std::string name;
    if (kxUtils::call("getSceneName", message) && getFromMessage(message, "name", name))
        std::cout << name << '\n';
    std::cout << kxUtils::call("makeCoffee") << '\n';
}
// Prints:
// 0
// engine
// 0
