# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Links the programs of this folder and the ones below with a fast linker, if there is one. With the default linker forty
# test programs take a tenth of the whole build's processor time.

include(CheckCXXSourceCompiles)

if(NOT WIN32)
  foreach(linker lld gold)
    set(CMAKE_REQUIRED_LINK_OPTIONS -fuse-ld=${linker})
    check_cxx_source_compiles("int main() {}" VIGIL_HAS_${linker})
    unset(CMAKE_REQUIRED_LINK_OPTIONS)
    if(VIGIL_HAS_${linker})
      add_link_options(-fuse-ld=${linker})
      break()
    endif()
  endforeach()
endif()
