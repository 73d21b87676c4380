// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxRandom.h"

std::array<std::uint32_t, 624> kxRandom::s_randomTable{};
std::uint32_t kxRandom::s_index = 0;
const float kxRandom::s_rcpFloatMax1 = 0x1p-32F;
const float kxRandom::s_rcpFloatMax2 = 0x1p-32F;
