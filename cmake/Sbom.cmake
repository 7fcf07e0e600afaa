# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# A software bill of materials, as SPDX 2.3 in JSON. Functions for scripts: the file is not part of the project's build.

function(vigil_json_text text result)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\\\"" text "${text}")
  set(${result} "\"${text}\"" PARENT_SCOPE)
endfunction()

# vigil_sbom_package(RESULT ID NAME VERSION LICENCE FILE): the entry of a package; FILE is the file it is in, or empty.
function(vigil_sbom_package result id name version licence file)
  set(lines "")
  foreach(entry "name=${name}" "SPDXID=${id}" "versionInfo=${version}" "downloadLocation=NOASSERTION"
      "licenseConcluded=${licence}" "licenseDeclared=${licence}" "copyrightText=NOASSERTION")
    string(REGEX MATCH "^([^=]*)=(.*)$" unused "${entry}")
    vigil_json_text("${CMAKE_MATCH_2}" text)
    list(APPEND lines "      \"${CMAKE_MATCH_1}\": ${text}")
  endforeach()
  list(APPEND lines "      \"filesAnalyzed\": false")
  if(file)
    get_filename_component(file_name ${file} NAME)
    file(SHA256 ${file} hash)
    list(APPEND lines "      \"packageFileName\": \"${file_name}\"")
    list(APPEND lines "      \"checksums\": [ { \"algorithm\": \"SHA256\", \"checksumValue\": \"${hash}\" } ]")
  endif()
  list(JOIN lines ",\n" lines)
  set(${result} "    {\n${lines}\n    }" PARENT_SCOPE)
endfunction()

# vigil_write_sbom(FILE NAME VERSION EPOCH [PART...]): writes FILE.spdx.json. A part is
# "RELATIONSHIP|NAME|VERSION|LICENCE|FILE": what the package contains (CONTAINS) or needs (DEPENDS_ON).
function(vigil_write_sbom file name version epoch)
  set(relationships
    "    { \"spdxElementId\": \"SPDXRef-DOCUMENT\", \"relationshipType\": \"DESCRIBES\", \"relatedSpdxElement\": \"SPDXRef-Package\" }")
  vigil_sbom_package(packages SPDXRef-Package ${name} ${version} MIT ${file})
  set(number 0)
  foreach(part IN LISTS ARGN)
    string(REGEX MATCH "^([^|]*)\\|([^|]*)\\|([^|]*)\\|([^|]*)\\|(.*)$" unused "${part}")
    set(relationship ${CMAKE_MATCH_1})
    math(EXPR number "${number} + 1")
    vigil_sbom_package(package SPDXRef-Part-${number}
      "${CMAKE_MATCH_2}" "${CMAKE_MATCH_3}" "${CMAKE_MATCH_4}" "${CMAKE_MATCH_5}")
    string(APPEND packages ",\n${package}")
    string(APPEND relationships
      ",\n    { \"spdxElementId\": \"SPDXRef-Package\", \"relationshipType\": \"${relationship}\", \"relatedSpdxElement\": \"SPDXRef-Part-${number}\" }")
  endforeach()

  set(texts "")
  if("${ARGN}" MATCHES "LicenseRef-Public-Domain") # the one that SPDX has no name for
    set(texts ",
  \"hasExtractedLicensingInfos\": [
    { \"licenseId\": \"LicenseRef-Public-Domain\", \"extractedText\": \"In the public domain.\" }
  ]")
  endif()

  set(ENV{SOURCE_DATE_EPOCH} ${epoch})
  string(TIMESTAMP created "%Y-%m-%dT%H:%M:%SZ" UTC)
  get_filename_component(file_name ${file} NAME)
  file(SHA256 ${file} hash)
  file(WRITE ${file}.spdx.json "{
  \"spdxVersion\": \"SPDX-2.3\",
  \"dataLicense\": \"CC0-1.0\",
  \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"${file_name}\",
  \"documentNamespace\": \"https://vigil.example/spdx/${file_name}-${hash}\",
  \"creationInfo\": {
    \"created\": \"${created}\",
    \"creators\": [ \"Organization: The Vigil authors\", \"Tool: vigil-${version}\" ]
  },
  \"packages\": [\n${packages}\n  ],
  \"relationships\": [\n${relationships}\n  ]${texts}
}
")
endfunction()
