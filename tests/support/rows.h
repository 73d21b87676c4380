// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Tables of which each row is a test.
#pragma once

#include <string>

namespace kxtest {

/// For INSTANTIATE_TEST_SUITE_P: the test is called after the member `name` of its row, which holds
/// letters, digits and underscores only.
inline constexpr auto nameOfRow = [](const auto& test) { return std::string(test.param.name); };

}  // namespace kxtest
