# SPDX-FileCopyrightText: 2026 The kxUtils authors
# SPDX-License-Identifier: MIT

# Run by CPack when the files of the packages lie ready: adds to each package an SPDX 2.3 document
# that lists them with their checksums, and what the package needs. Links have no contents and are
# not listed; the document itself is left out of the verification code, as the standard has it.
# cmake/Packages.cmake sets CPACK_SPDX_*.
cmake_minimum_required(VERSION 3.25)

string(TIMESTAMP spdx_created "%Y-%m-%dT%H:%M:%SZ" UTC)  # SOURCE_DATE_EPOCH, if it is set

# "BSL-1.0" and "MIT" are "MIT AND BSL-1.0" together with our own.
function(spdx_licence OUT)
  set(licences MIT)
  foreach(dependency IN LISTS ARGN)
    list(APPEND licences ${CPACK_SPDX_${dependency}_LICENSE})
  endforeach()
  list(REMOVE_DUPLICATES licences)
  list(JOIN licences " AND " licences)
  set(${OUT} "${licences}" PARENT_SCOPE)
endfunction()

# FOLDER: what is packed. DOCUMENT: where the list goes, below it. PACKAGE: the name of the package.
# COMPONENT: whose CPACK_SPDX_<COMPONENT>_{STATIC_LINK,DYNAMIC_LINK,DEPENDS_ON} name what it needs.
function(spdx_document FOLDER DOCUMENT PACKAGE COMPONENT)
  set(contained ${CPACK_SPDX_${COMPONENT}_STATIC_LINK})
  spdx_licence(licence ${contained})
  set(self "SPDXRef-Package-${PACKAGE}")
  set(relationships "\n  {\"spdxElementId\": \"SPDXRef-DOCUMENT\", \"relationshipType\": \"DESCRIBES\", \"relatedSpdxElement\": \"${self}\"}")
  set(relationship ",\n  {\"spdxElementId\": \"${self}\", \"relationshipType\":")

  file(REMOVE "${FOLDER}/${DOCUMENT}")
  file(GLOB_RECURSE names LIST_DIRECTORIES false RELATIVE "${FOLDER}" "${FOLDER}/*")
  list(SORT names)
  set(files "")
  set(all_sha1 "")
  foreach(name IN LISTS names)
    set(path "${FOLDER}/${name}")
    if(IS_SYMLINK "${path}")
      continue()
    endif()
    file(SHA1 "${path}" sha1)
    file(SHA256 "${path}" sha256)
    list(APPEND all_sha1 ${sha1})
    string(SHA1 id "${name}")
    set(file_licence MIT)
    if(name MATCHES "bin/|\\.so|NOTICE")  # what holds code of the libraries, or their texts
      set(file_licence "${licence}")
    endif()
    if(files)
      string(APPEND files ",")
    endif()
    string(APPEND files "
  {\"SPDXID\": \"SPDXRef-File-${id}\", \"fileName\": \"./${name}\", \"licenseConcluded\": \"${file_licence}\",
   \"checksums\": [{\"algorithm\": \"SHA1\", \"checksumValue\": \"${sha1}\"},
                 {\"algorithm\": \"SHA256\", \"checksumValue\": \"${sha256}\"}]}")
    string(APPEND relationships "${relationship} \"CONTAINS\", \"relatedSpdxElement\": \"SPDXRef-File-${id}\"}")
  endforeach()
  list(SORT all_sha1)
  list(JOIN all_sha1 "" all_sha1)
  string(SHA1 code "${all_sha1}")

  set(others "")
  set(seen "")
  foreach(type STATIC_LINK DYNAMIC_LINK DEPENDS_ON)
    foreach(dependency IN LISTS CPACK_SPDX_${COMPONENT}_${type})
      string(APPEND relationships "${relationship} \"${type}\", \"relatedSpdxElement\": \"SPDXRef-Package-${dependency}\"}")
      if(NOT dependency IN_LIST seen)
        list(APPEND seen ${dependency})
        string(APPEND others ",
  {\"SPDXID\": \"SPDXRef-Package-${dependency}\", \"name\": \"${dependency}\", \"versionInfo\": \"${CPACK_SPDX_${dependency}_VERSION}\",
   \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": false,
   \"licenseConcluded\": \"${CPACK_SPDX_${dependency}_LICENSE}\", \"licenseDeclared\": \"${CPACK_SPDX_${dependency}_LICENSE}\",
   \"copyrightText\": \"NOASSERTION\"}")
      endif()
    endforeach()
  endforeach()

  file(WRITE "${FOLDER}/${DOCUMENT}" "{
\"spdxVersion\": \"SPDX-2.3\",
\"dataLicense\": \"CC0-1.0\",
\"SPDXID\": \"SPDXRef-DOCUMENT\",
\"name\": \"${PACKAGE}-${CPACK_PACKAGE_VERSION}\",
\"documentNamespace\": \"https://kxutils.example/spdx/${PACKAGE}-${CPACK_PACKAGE_VERSION}-${code}\",
\"creationInfo\": {\"created\": \"${spdx_created}\",
  \"creators\": [\"Organization: ${CPACK_SPDX_CONTACT}\", \"Tool: CPack-${CMAKE_VERSION}\"]},
\"packages\": [
  {\"SPDXID\": \"${self}\", \"name\": \"${PACKAGE}\", \"versionInfo\": \"${CPACK_PACKAGE_VERSION}\",
   \"supplier\": \"Organization: ${CPACK_SPDX_CONTACT}\",
   \"downloadLocation\": \"NOASSERTION\", \"filesAnalyzed\": true,
   \"packageVerificationCode\": {\"packageVerificationCodeValue\": \"${code}\",
     \"packageVerificationCodeExcludedFiles\": [\"./${DOCUMENT}\"]},
   \"licenseConcluded\": \"${licence}\", \"licenseDeclared\": \"MIT\",
   \"copyrightText\": \"2026 The kxUtils authors\"}${others}],
\"files\": [${files}],
\"relationships\": [${relationships}]
}
")
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
