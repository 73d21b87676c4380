# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# CPack: three Debian packages (runtime, dev, tools) or one archive; scripts/package makes them all.
set(CPACK_PACKAGE_VENDOR "kxUtils")
set(CPACK_PACKAGE_CONTACT "kxUtils maintainers <maintainers@kxutils.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL runtime dev tools)

set(CPACK_ARCHIVE_COMPONENT_INSTALL OFF)
set(CPACK_PACKAGE_FILE_NAME "kxutils-${PROJECT_VERSION}-${CMAKE_SYSTEM_NAME}-${CMAKE_SYSTEM_PROCESSOR}")

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SOURCE kxutils)
# Finds the library that the tools link, which is not in any package yet.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/Common/Libs/Utils")

set(runtime_package libkxutils${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(debian_description
"kxUtils gives an application and its plug-ins one log, the installation
layout, file helpers that can ask the user, files with a checksum, buffered
streams, codecs and processor features.")
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "${debian_description}

This package holds the shared library.")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/debian/triggers")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME libkxutils-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION}), libboost-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION
  "${debian_description}

This package holds the headers, the CMake package and the pkg-config file.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME kxutils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"This package holds a command-line program that stamps files with checksums
and verifies them, converts Base64, computes CRC-32, groups digits, resolves
paths and shows what the processor says about itself.")

# What the packages' SPDX documents say they need; cmake/Spdx.cmake writes these.
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/Spdx.cmake")
string(REGEX REPLACE "<(.*)>" "(\\1)" CPACK_SPDX_CONTACT "${CPACK_PACKAGE_CONTACT}")
set(CPACK_SPDX_Boost_LICENSE BSL-1.0)
set(CPACK_SPDX_Boost_VERSION "${Boost_VERSION}")
set(CPACK_SPDX_fast-float_LICENSE MIT)
set(CPACK_SPDX_fast-float_VERSION "${FastFloat_VERSION}")
set(CPACK_SPDX_oneTBB_LICENSE Apache-2.0)
set(CPACK_SPDX_oneTBB_VERSION "${TBB_VERSION}")
set(CPACK_SPDX_CLI11_LICENSE BSD-3-Clause)
set(CPACK_SPDX_CLI11_VERSION "${CLI11_VERSION}")
set(CPACK_SPDX_nlohmann-json_LICENSE MIT)
set(CPACK_SPDX_nlohmann-json_VERSION "${nlohmann_json_VERSION}")
set(CPACK_SPDX_${runtime_package}_LICENSE MIT)
set(CPACK_SPDX_${runtime_package}_VERSION "${PROJECT_VERSION}")
set(CPACK_SPDX_RUNTIME_STATIC_LINK Boost fast-float)  # headers, whose code is compiled in
set(CPACK_SPDX_RUNTIME_DYNAMIC_LINK oneTBB)
set(CPACK_SPDX_DEV_DEPENDS_ON ${runtime_package} Boost)
set(CPACK_SPDX_TOOLS_STATIC_LINK Boost CLI11 nlohmann-json)
set(CPACK_SPDX_TOOLS_DYNAMIC_LINK ${runtime_package})
set(CPACK_SPDX_ARCHIVE_STATIC_LINK ${CPACK_SPDX_TOOLS_STATIC_LINK} fast-float)
set(CPACK_SPDX_ARCHIVE_DYNAMIC_LINK oneTBB)
set(CPACK_SPDX_ARCHIVE_DEPENDS_ON Boost)
string(REGEX REPLACE "^/" "" CPACK_SPDX_ARCHIVE_DOCUMENT "${CMAKE_INSTALL_DOCDIR}/kxutils.spdx.json")

# The documentation that every Debian package contains.
if(KXUTILS_DEBIAN)
  find_program(KXUTILS_GZIP gzip REQUIRED)
  set(debian_changelog "${PROJECT_BINARY_DIR}/changelog.gz")
  add_custom_command(OUTPUT "${debian_changelog}"
    COMMAND sh -c "'${KXUTILS_GZIP}' -9nc '${PROJECT_SOURCE_DIR}/packaging/debian/changelog' > changelog.gz"
    WORKING_DIRECTORY "${PROJECT_BINARY_DIR}"
    DEPENDS "${PROJECT_SOURCE_DIR}/packaging/debian/changelog" VERBATIM)
  add_custom_target(debian_changelog ALL DEPENDS "${debian_changelog}")
  foreach(component runtime dev tools)
    string(TOUPPER ${component} upper)
    install(FILES "${debian_changelog}" "${PROJECT_SOURCE_DIR}/packaging/debian/copyright"
      DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME}"
      COMPONENT ${component})
  endforeach()
  install(FILES Common/Libs/Utils/NOTICE
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${runtime_package}" COMPONENT runtime)
  install(FILES tools/kxutils/NOTICE
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_TOOLS_PACKAGE_NAME}" COMPONENT tools)
else()
  install(FILES Common/Libs/Utils/NOTICE
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime RENAME NOTICE.libkxUtils)
  install(FILES tools/kxutils/NOTICE
    DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT tools RENAME NOTICE.kxutils)
  install(FILES LICENSE CHANGELOG.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT runtime)
endif()

include(CPack)
