# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# vigil_qt_parts(RESULT): what Qt5Core.dll of scripts/build-windows-qt has from other projects, as parts of a bill of
# materials, see Sbom.cmake. Qt5Network.dll has nothing. The source is the files qt_attribution.json of Qt, without those
# for other modules and systems, and the list of Qt's compiled sources.

# Each "name|version|licence". A part without a version of its own has the version of Qt. So has each in another Qt.
set(vigil_parts_of_qt_5_15_8
  "Big5, EUC-JP, EUC-KR, GBK, JIS, Shift-JIS and TSCII text codecs||BSD-2-Clause"
  "CLDR|39|Unicode-DFS-2016"
  "FreeBSD strtoll and strtoull|18b29f3fb8abee5d57ed8f4a44f806bec7e0eeff|BSD-3-Clause"
  "HarfBuzz||MIT"
  "Keccak|3.2|CC0-1.0"
  "MD4||LicenseRef-Public-Domain"
  "MD5||LicenseRef-Public-Domain"
  "PCRE2|10.39|BSD-3-Clause"
  "PCRE2 just-in-time compiler|10.39|BSD-2-Clause"
  "Public Suffix List|d4e247a71d1b6da08dad906b098c818493166fcc|MPL-2.0"
  "RFC 6234 secure hash algorithms||BSD-3-Clause"
  "Robert Penner's easing equations||BSD-3-Clause"
  "SHA-1||LicenseRef-Public-Domain"
  "TinyCBOR|0.6+patches|MIT"
  "Unicode Character Database|26|Unicode-DFS-2016"
  "brg_endian|4b9e13ead2c5b5e41ca27c65de4dd69ae0bac228|BSD-2-Clause"
  "double-conversion|3.1.5|BSD-3-Clause"
  "shared-mime-info||NOASSERTION"
  "zlib|1.2.11|Zlib")

function(vigil_qt_parts result)
  set(parts "")
  foreach(part IN LISTS vigil_parts_of_qt_5_15_8)
    string(REGEX MATCH "^([^|]*)\\|([^|]*)\\|([^|]*)$" unused "${part}")
    set(name ${CMAKE_MATCH_1})
    set(version "${CMAKE_MATCH_2}")
    set(licence ${CMAKE_MATCH_3})
    if(version STREQUAL "" OR NOT Qt5_VERSION STREQUAL "5.15.8")
      set(version "of Qt ${Qt5_VERSION}")
    endif()
    list(APPEND parts "CONTAINS|${name}|${version}|${licence}|bin/Qt5Core.dll")
  endforeach()
  set(${result} "${parts}" PARENT_SCOPE)
endfunction()
