# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Packages built by `cpack`: a zip file for Windows, elsewhere a .tar.gz file. Debian packages come from the folder debian,
# by scripts/build-packages.

set(CPACK_PACKAGE_NAME vigil)
set(CPACK_PACKAGE_VENDOR "The Vigil authors")
set(CPACK_PACKAGE_CONTACT "The Vigil authors <vigil@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE ${PROJECT_SOURCE_DIR}/LICENSE)
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)

if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_SYSTEM_NAME win64)
else()
  set(CPACK_GENERATOR TGZ)
endif()

include(CPack)
