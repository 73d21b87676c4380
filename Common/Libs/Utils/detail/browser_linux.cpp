// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <cstdlib>

#include "detail/browser.h"

namespace kx::detail {

// A command "open" may be just another name of the desktop's opener or of the viewer of mail
// attachments, which do not know "-a". Asked at every call: the session may gain commands.
std::string browserCommand() {
    const bool canOpen = std::system(
                             "o=$(command -v open) && "
                             "! [ \"$o\" -ef \"$(command -v xdg-open)\" ] && "
                             "! [ \"$o\" -ef \"$(command -v run-mailcap)\" ]") == 0;
    return canOpen ? "open -a Safari " : "xdg-open ";
}

}  // namespace kx::detail
