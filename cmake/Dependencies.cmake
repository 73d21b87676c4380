# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# Finds a package that the build needs. If it is missing, names the command that installs it.
function(kx_require PACKAGE DEBIAN_PACKAGE)
  find_package(${PACKAGE} QUIET ${ARGN} GLOBAL)
  if(NOT ${PACKAGE}_FOUND)
    message(FATAL_ERROR
      "kxUtils needs ${PACKAGE}; install it with: sudo apt-get install ${DEBIAN_PACKAGE}")
  endif()
  set(${PACKAGE}_VERSION "${${PACKAGE}_VERSION}" PARENT_SCOPE)
endfunction()

# Builds GoogleTest from source for a C++ library or a processor that Debian's build does not fit.
function(kx_googletest SOURCES)
  set(BUILD_GMOCK OFF)
  set(INSTALL_GTEST OFF)
  set(CMAKE_COMPILE_WARNING_AS_ERROR OFF)
  add_subdirectory("${SOURCES}" googletest EXCLUDE_FROM_ALL)
endfunction()

kx_require(Boost libboost-dev)
kx_require(FastFloat libfast-float-dev)  # headers only, needed only while the library is built
kx_require(TBB libtbb-dev COMPONENTS tbbmalloc)
if(KXUTILS_BUILD_TESTS AND KXUTILS_GOOGLETEST)
  kx_googletest("${KXUTILS_GOOGLETEST}")
elseif(KXUTILS_BUILD_TESTS)
  kx_require(GTest libgtest-dev)
endif()
if(KXUTILS_BUILD_EXAMPLES OR KXUTILS_BUILD_TOOLS)
  kx_require(CLI11 libcli11-dev)
endif()
if(KXUTILS_BUILD_TOOLS)
  kx_require(nlohmann_json nlohmann-json3-dev)
endif()
if(KXUTILS_BUILD_TESTS OR KXUTILS_BUILD_TOOLS OR KXUTILS_SANITIZE)
  kx_require(Threads libc6-dev)
endif()
