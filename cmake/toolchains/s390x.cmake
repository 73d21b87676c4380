# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

include("${CMAKE_CURRENT_LIST_DIR}/debian-cross.cmake")
kx_debian_cross(s390x s390x)
