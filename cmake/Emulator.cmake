# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# kx_emulate(TARGET): makes the program PROGRAM.elf, and PROGRAM a script that runs it with the command
# KXUTILS_EMULATOR. This is for programs of another processor that are started by a shell or by another
# program, which CMake's own CROSSCOMPILING_EMULATOR does not reach.
function(kx_emulate TARGET)
  set(launcher "${CMAKE_CURRENT_BINARY_DIR}/${TARGET}.launcher")
  file(CONFIGURE OUTPUT "${launcher}" @ONLY
    CONTENT [[#!/bin/sh
exec @KXUTILS_EMULATOR@ "$(/usr/bin/readlink -f "$0").elf" "$@"
]])
  file(CHMOD "${launcher}" PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  set_property(TARGET ${TARGET} APPEND PROPERTY LINK_DEPENDS "${launcher}")
  add_custom_command(TARGET ${TARGET} POST_BUILD VERBATIM
    COMMAND "${CMAKE_COMMAND}" -E rename "$<TARGET_FILE:${TARGET}>" "$<TARGET_FILE:${TARGET}>.elf"
    COMMAND "${CMAKE_COMMAND}" -E copy "${launcher}" "$<TARGET_FILE:${TARGET}>")
endfunction()

# The number of seconds that a test, and a whole test program, may take.
set(KXUTILS_TEST_TIMEOUT 120)
set(KXUTILS_WHOLE_TIMEOUT 300)
if(KXUTILS_EMULATOR)
  set(KXUTILS_TEST_TIMEOUT 1200)
  set(KXUTILS_WHOLE_TIMEOUT 1800)
endif()
