# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

include(${CMAKE_CURRENT_LIST_DIR}/Steps.cmake)

file(REMOVE_RECURSE ${WORK_DIR})
set(packages ${WORK_DIR}/packages)
run(${CPACK} --config ${BUILD_DIR}/CPackConfig.cmake -C ${CONFIG} -B ${packages})

file(GLOB archive ${packages}/vigil-1.0.0-*.tar.gz)
if(NOT archive)
  message(FATAL_ERROR "There is no .tar.gz file")
endif()
check_sbom(${archive} vigil Qt Net-SNMP)
set(folder ${WORK_DIR}/archive)
unpack(${archive} ${folder})
file(GLOB prefix ${folder}/vigil-1.0.0-*)
expect_files(
  ${prefix}/share/snmp/mibs/VIGIL-MIB.txt
  ${prefix}/share/doc/vigil/operations.md)

# Each library that the binaries load is a part, the compiler's and the system's own aside. A build with sanitizers has
# theirs.
function(part_with library result)
  if(library MATCHES "^libQt5")
    set(part Qt)
  elseif(library MATCHES "^libnetsnmp")
    set(part Net-SNMP)
  elseif(library MATCHES "^lib(systemd|microhttpd)\\.")
    set(part lib${CMAKE_MATCH_1})
  elseif(library MATCHES "^lib(vigil|c|m|gcc_s|stdc\\+\\+|pthread|[alt]san|ubsan)\\.|^ld-linux")
    set(part vigil) # nothing beside the package itself
  else()
    message(FATAL_ERROR "No part is known that has ${library}")
  endif()
  set(${result} ${part} PARENT_SCOPE)
endfunction()
file(GLOB binaries ${prefix}/bin/vigil* ${prefix}/lib/libvigil.so ${prefix}/lib/*/libvigil.so)
foreach(binary IN LISTS binaries)
  run(${READELF} --dynamic ${binary})
  string(REPLACE "[" "" output "${output}") # one alone in an element would join it with the next one
  string(REGEX MATCHALL "Shared library: [^]]*" libraries "${output}")
  foreach(library IN LISTS libraries)
    string(REPLACE "Shared library: " "" library ${library})
    part_with(${library} part)
    if(NOT ";${sbom_versions}" MATCHES ";${part}=")
      message(FATAL_ERROR "${archive}.spdx.json lacks ${part}, which ${binary} loads: ${sbom_versions}")
    endif()
  endforeach()
endforeach()

run(${prefix}/bin/vigil-agent --version)
run(${prefix}/bin/vigil-host-health --help)
check_units(${prefix}/lib/systemd/system ${prefix}/bin)
build_consumer(${prefix})

file(REMOVE_RECURSE ${WORK_DIR})
