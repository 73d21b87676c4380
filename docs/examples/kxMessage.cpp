// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A request, the reply in its record, and the effect of copying.
#include <iostream>
#include <string>

#include <kxMessage.h>

int main() {
    kxMessage request(7, "text", std::string("Overwrite?"), "default button", 0);
    request.set("button", 1, /*overwrite=*/true);  // the host's answer

    int button = -1;
    std::string text;
    if (getFromMessage(request, "button", button) && getFromMessage(request, "text", text))
        std::cout << text << " -> button " << button << '\n';
    std::cout << "escape button: " << getFromMessage(request, "escape button", button) << '\n';

    const kxMessage copy(request);
    std::cout << "ids: " << request.id() << ' ' << copy.id() << '\n';
    for (const auto& attribute : copy.getMap()) std::cout << attribute.first << '\n';
}
// Prints:
// Overwrite? -> button 1
// escape button: 0
// ids: 7 0
// button
// default button
// text
