#include "checksum.h"

#include <array>
#include <cinttypes>
#include <cstdio>

std::string checksumDigits(std::uint32_t checksum) {
    std::array<char, 9> digits{};
    std::snprintf(digits.data(), digits.size(), "%08" PRIX32, checksum);
    return digits.data();
}
