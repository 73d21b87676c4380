# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# kx_harden(TARGET): has compiler and linker guard what is built against faults in it being made use
# of, as far as they can (OpenSSF, "Compiler Options Hardening Guide for C and C++").
# tests/packages/check_hardening looks at the files that are delivered.
if(KXUTILS_HARDENING)
  include(CheckCXXCompilerFlag)
  include(CheckCXXSourceCompiles)
  include(CheckLinkerFlag)
  include(CheckPIESupported)
  check_pie_supported(LANGUAGES CXX)

  # What returns through an overwritten stack, jumps over its end or calls to where no function begins.
  # A flag of another processor is an error for some compilers, and a warning for others.
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

  # Calls of the C library that write beyond an object whose size is known. This takes optimisation,
  # and the sanitizers watch the calls themselves.
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

  # What the loader has filled in is read-only when a program starts, and no stack holds code. Mach-O
  # has all of it by default.
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

# kx_check_containers(): from here on, what this directory builds has the containers of the GNU library
# look at each index. Not for the library itself, whose time users pay.
macro(kx_check_containers)
  if(KXUTILS_HARDENING)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
  endif()
endmacro()

# kx_load_anywhere(): the programs of this directory are loaded at any address, whatever the compiler's
# default.
macro(kx_load_anywhere)
  if(KXUTILS_HARDENING)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
  endif()
endmacro()
