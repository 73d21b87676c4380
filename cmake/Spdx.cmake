# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# Run by CPack when the files of the packages lie ready: adds an SPDX document to each package.
# cmake/Packages.cmake sets CPACK_SPDX_*.
cmake_minimum_required(VERSION 3.25)
find_program(PYTHON3 python3 REQUIRED)

# FOLDER: the files to be packed. DOCUMENT: the path of the document below that folder. PACKAGE: the name
# of the package. COMPONENT: CPACK_SPDX_<COMPONENT>_{STATIC_LINK,DYNAMIC_LINK,DEPENDS_ON} name what this
# component needs.
function(spdx_document FOLDER DOCUMENT PACKAGE COMPONENT)
  set(needs "")
  foreach(type STATIC_LINK DYNAMIC_LINK DEPENDS_ON)
    foreach(name IN LISTS CPACK_SPDX_${COMPONENT}_${type})
      list(APPEND needs
        --needs ${type} ${name} "${CPACK_SPDX_${name}_VERSION}" "${CPACK_SPDX_${name}_LICENSE}")
    endforeach()
  endforeach()
  execute_process(
    COMMAND "${PYTHON3}" "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/spdx.py"
      "${FOLDER}" "${DOCUMENT}" "${PACKAGE}" --version "${CPACK_PACKAGE_VERSION}"
      --contact "${CPACK_SPDX_CONTACT}" --tool "CPack-${CMAKE_VERSION}" ${needs}
    COMMAND_ERROR_IS_FATAL ANY)
endfunction()

if(CPACK_GENERATOR STREQUAL "DEB")
  foreach(component IN LISTS CPACK_COMPONENTS_ALL)
    string(TOUPPER ${component} upper)
    set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
    spdx_document("${CPACK_TEMPORARY_DIRECTORY}/${component}" usr/share/doc/${package}/${package}.spdx.json
      ${package} ${upper})
  endforeach()
else()
  spdx_document("${CPACK_TEMPORARY_DIRECTORY}" "${CPACK_SPDX_ARCHIVE_DOCUMENT}" kxutils ARCHIVE)
endif()
