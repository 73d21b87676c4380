// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// State of the application's random number generator.
#pragma once

#include <array>
#include <cstdint>

#include "kxExport.h"

/// Storage only. The application supplies the generator, and since its state is here, the
/// executable and all plug-ins draw from one generator. The table and the index are zero (no words
/// drawn) until the application fills them; the two factors are constants. The state is not
/// guarded: main thread only.
class KXUTILS_API kxRandom {
public:
    /// The words of the generator's state, as many as a 32-bit Mersenne Twister has.
    static std::array<std::uint32_t, 624> s_randomTable;
    /// The index of the next word in s_randomTable.
    static std::uint32_t s_index;

    /// Both are 2^-32, the factor that takes a 32-bit random word into [0, 1]. The upper end is
    /// reached, because the 128 largest words round to 2^32 as a float.
    /// @{
    static const float s_rcpFloatMax1;
    static const float s_rcpFloatMax2;
    /// @}
};
