// What the sub-commands that compute checksums share.
#pragma once

#include <cstdint>
#include <string>

/// Eight upper-case hexadecimal digits.
std::string checksumDigits(std::uint32_t checksum);
