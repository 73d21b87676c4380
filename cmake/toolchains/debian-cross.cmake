# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# kx_debian_cross(ARCHITECTURE PROCESSOR): builds with Debian's cross compiler for another architecture
# and runs the programs with QEMU. Packages are looked up only in what scripts/sysroot has fetched.
macro(kx_debian_cross ARCHITECTURE PROCESSOR)
  set(CMAKE_SYSTEM_NAME Linux)
  set(CMAKE_SYSTEM_PROCESSOR ${PROCESSOR})
  set(CMAKE_C_COMPILER ${PROCESSOR}-linux-gnu-gcc)
  set(CMAKE_CXX_COMPILER ${PROCESSOR}-linux-gnu-g++)
  set(CMAKE_LIBRARY_ARCHITECTURE ${PROCESSOR}-linux-gnu)
  set(CMAKE_FIND_ROOT_PATH "${CMAKE_CURRENT_LIST_DIR}/../../build/sysroot/${ARCHITECTURE}")
  cmake_path(NORMAL_PATH CMAKE_FIND_ROOT_PATH)
  set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
  foreach(kind LIBRARY INCLUDE PACKAGE)
    set(CMAKE_FIND_ROOT_PATH_MODE_${kind} ONLY)
  endforeach()
  set(KXUTILS_EMULATOR "/usr/bin/qemu-${PROCESSOR} -L /usr/${PROCESSOR}-linux-gnu -0 \"$0\"")
endmacro()
