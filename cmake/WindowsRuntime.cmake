# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# vigil_runtime_dlls: the DLLs of Qt and of the compiler. Programs for Windows need them in their own folder, so they are
# copied to the build's program folder. vigil_runtime_licences: their licences, each as "installed name=file".

set(vigil_runtime_dlls "")
foreach(target Qt5::Core Qt5::Network)
  get_target_property(dll ${target} IMPORTED_LOCATION_RELEASE)
  list(APPEND vigil_runtime_dlls ${dll})
endforeach()
foreach(name libgcc_s_seh-1.dll libstdc++-6.dll libwinpthread-1.dll)
  execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
    OUTPUT_VARIABLE dll
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  get_filename_component(dll ${dll} ABSOLUTE)
  if(EXISTS ${dll})
    list(APPEND vigil_runtime_dlls ${dll})
  endif()
endforeach()
file(COPY ${vigil_runtime_dlls} DESTINATION ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})

get_filename_component(qt_prefix ${Qt5Core_DIR}/../../.. ABSOLUTE)
set(vigil_runtime_licences "")
foreach(licence
    qt-LGPL-3.txt=${qt_prefix}/LICENSE.LGPL3
    qt-GPL-3.txt=${qt_prefix}/LICENSE.GPL3
    qt-copyright.txt=/usr/share/doc/qtbase5-dev/copyright
    gcc-copyright.txt=/usr/share/doc/gcc-mingw-w64-x86-64-posix-runtime/copyright
    mingw-w64-copyright.txt=/usr/share/doc/mingw-w64-x86-64-dev/copyright)
  string(REGEX REPLACE ".*=" "" file ${licence})
  if(EXISTS ${file})
    list(APPEND vigil_runtime_licences ${licence})
  else()
    message(STATUS "${file} not found: packages will lack a licence")
  endif()
endforeach()
