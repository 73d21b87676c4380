#include <cstdlib>

#include "detail/browser.h"

namespace kx::detail {

// Asked at every call: a session may gain the command, and a test changes PATH.
std::string browserCommand() {
    const bool canOpen = std::system("command -v open >/dev/null 2>&1") == 0;
    return canOpen ? "open -a Safari " : "xdg-open ";
}

}  // namespace kx::detail
