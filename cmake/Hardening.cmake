# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# kx_harden(TARGET): makes the compiler and the linker guard the target, as far as they can, against
# exploits of its faults (OpenSSF, "Compiler Options Hardening Guide for C and C++").
# tests/packages/check_hardening examines the delivered files.
if(KXUTILS_HARDENING)
  include(CheckCXXCompilerFlag)
  include(CheckCXXSourceCompiles)
  include(CheckLinkerFlag)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)

  # Guards against returns through an overwritten stack, jumps over the end of the stack, and calls to
  # places where no function begins. Some compilers treat a flag of another processor as an error, others
  # as a warning.
  function(kx_check_hardening)
    set(CMAKE_REQUIRED_FLAGS -Werror)
    foreach(flag IN ITEMS
        -fstack-protector-strong -fstack-clash-protection -fcf-protection=full -mbranch-protection=standard)
      string(MAKE_C_IDENTIFIER "KXUTILS_HAS${flag}" has)
      check_cxx_compiler_flag(${flag} ${has})
      if(${has})
        list(APPEND kx_hardening_compile ${flag})
      endif()
    endforeach()
    set(kx_hardening_compile ${kx_hardening_compile} PARENT_SCOPE)
  endfunction()
  kx_check_hardening()

  # Guards against calls of the C library that write beyond an object whose size is known. This needs
  # optimisation, and the sanitizers watch these calls themselves.
  function(kx_check_fortify)
    set(CMAKE_TRY_COMPILE_CONFIGURATION Release)
    set(CMAKE_REQUIRED_FLAGS "-O2 -Werror -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3")
    check_cxx_source_compiles("#include <cstdio>\nint main() {}" KXUTILS_HAS_FORTIFY_3)
  endfunction()
  if(NOT KXUTILS_SANITIZE)
    kx_check_fortify()
    set(level 2)
    if(KXUTILS_HAS_FORTIFY_3)
      set(level 3)
    endif()
    set(optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
    list(APPEND kx_hardening_compile
      "$<${optimised}:-U_FORTIFY_SOURCE>" "$<${optimised}:-D_FORTIFY_SOURCE=${level}>")
  endif()

  # The data that the loader has filled in is read-only when a program starts, and no stack holds code.
  # Mach-O does all of this by default.
  if(NOT APPLE)
    foreach(flag IN ITEMS relro now noexecstack)
      check_linker_flag(CXX "LINKER:-z,${flag}" KXUTILS_HAS_Z_${flag})
      if(KXUTILS_HAS_Z_${flag})
        list(APPEND kx_hardening_link "LINKER:-z,${flag}")
      endif()
    endforeach()
  endif()
endif()

function(kx_harden TARGET)
  target_compile_options(${TARGET} PRIVATE ${kx_hardening_compile})
  target_link_options(${TARGET} PRIVATE ${kx_hardening_link})
endfunction()

# kx_check_containers(): from here on, in code built in this directory, the containers of the GNU library
# check each index. This is not for the library itself, since it would cost its users time.
macro(kx_check_containers)
  if(KXUTILS_HARDENING)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
  endif()
endmacro()

# kx_load_anywhere(): the programs of this directory can be loaded at any address, whatever the
# compiler's default is.
macro(kx_load_anywhere)
  if(KXUTILS_HARDENING)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  endif()
endmacro()
