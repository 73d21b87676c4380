# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# kx_compile_options(TARGET): sets the options with which every target of this project is compiled.
# Warnings become errors with CMake's own switch: -DCMAKE_COMPILE_WARNING_AS_ERROR=ON.
function(kx_compile_options TARGET)
  target_compile_options(${TARGET} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2 -Wold-style-cast -Wundef)
  set_target_properties(${TARGET} PROPERTIES CXX_EXTENSIONS OFF)
  kx_harden(${TARGET})
  # The delivered files do not depend on the folder in which they were built.
  if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
    target_compile_options(${TARGET} PRIVATE
      "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build" "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
  endif()
  if(KXUTILS_SANITIZE)
    target_compile_options(${TARGET} PRIVATE
      -fsanitize=${KXUTILS_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${TARGET} PRIVATE -fsanitize=${KXUTILS_SANITIZE})
  endif()
  if(KXUTILS_COVERAGE)
    # The path is compiled in because many tests run programs with a different environment. %m gives one
    # file per program, into which all its processes merge their counts. Threads count atomically:
    # whether code has been reached is computed from differences of counts, and a lost count would make
    # them wrong.
    set(profile "-fprofile-instr-generate=${PROJECT_BINARY_DIR}/profiles/%m.profraw")
    target_compile_options(${TARGET} PRIVATE "${profile}" -fprofile-update=atomic -fcoverage-mapping -fcoverage-mcdc
      "-fprofile-list=${PROJECT_SOURCE_DIR}/cmake/coverage-sources.txt")
    target_link_options(${TARGET} PRIVATE "${profile}")
  endif()
  get_target_property(type ${TARGET} TYPE)
  if(KXUTILS_EMULATOR AND type STREQUAL "EXECUTABLE")
    kx_emulate(${TARGET})
  endif()
endfunction()
