#include "detail/browser.h"

namespace kx::detail {

std::string browserCommand() { return "open -a Safari "; }

}  // namespace kx::detail
