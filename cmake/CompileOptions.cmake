# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# kx_compile_options(TARGET): what every target of this project is compiled with.
# Warnings become errors with CMake's own switch: -DCMAKE_COMPILE_WARNING_AS_ERROR=ON.
function(kx_compile_options TARGET)
  target_compile_options(${TARGET} PRIVATE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2 -Wold-style-cast -Wundef)
  set_target_properties(${TARGET} PROPERTIES CXX_EXTENSIONS OFF)
  kx_harden(${TARGET})
  # What is delivered does not depend on the folder that it was built in.
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
    # The path is compiled in: many tests run programs with an environment of their own. %m keeps
    # one file per program, into which all its processes merge their counts. Threads count atomically:
    # what has not been reached is told by differences of counts, which a lost one makes wrong.
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
