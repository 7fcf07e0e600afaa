# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Run by CPack, see Packages.cmake: packs the staged files and writes the bill of materials. The same files always give
# the same bytes: they are sorted, have the time of the commit and no user.

include(${CPACK_VIGIL_MODULE_DIR}/Sbom.cmake)

if(CPACK_VIGIL_MISSING_LICENCES)
  message(FATAL_ERROR "A package must have these licences: ${CPACK_VIGIL_MISSING_LICENCES}")
endif()

set(stage ${CPACK_TEMPORARY_DIRECTORY})
get_filename_component(parent ${stage} DIRECTORY)
get_filename_component(folder ${stage} NAME)

# pack(ARCHIVE FOLDER)
function(pack archive folder)
  file(REMOVE ${archive})
  if(archive MATCHES "\\.zip$")
    set(packer "zip -X -q -@ '${archive}'")
  else()
    set(packer "tar --create --no-recursion --files-from=- --owner=0 --group=0 --numeric-owner --format=gnu --mode=u=rwX,go=rX | gzip -9 -n >'${archive}'")
  endif()
  execute_process(
    COMMAND sh -euc "chmod -R u=rwX,go=rX '${folder}'
      find '${folder}' -exec touch --no-dereference --date=@${CPACK_VIGIL_EPOCH} {} +
      find '${folder}' | LC_ALL=C sort | ${packer}"
    WORKING_DIRECTORY ${parent} COMMAND_ERROR_IS_FATAL ANY)
  set(CPACK_EXTERNAL_BUILT_PACKAGES ${CPACK_EXTERNAL_BUILT_PACKAGES} ${archive} PARENT_SCOPE)
endfunction()

function(objcopy)
  execute_process(COMMAND ${CPACK_VIGIL_OBJCOPY} ${ARGN} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# What debuggers need goes to files and an archive of its own.
function(split_debug_information)
  file(GLOB programs RELATIVE ${stage} ${stage}/bin/*.exe ${stage}/bin/*.dll)
  foreach(program IN LISTS programs)
    set(debug ${parent}/${folder}-debug/${program}.debug)
    get_filename_component(directory ${debug} DIRECTORY)
    file(MAKE_DIRECTORY ${directory})
    objcopy(--only-keep-debug ${stage}/${program} ${debug})
    objcopy(--strip-unneeded --add-gnu-debuglink=${debug} ${stage}/${program})
  endforeach()
endfunction()

set(ENV{TZ} UTC) # a zip file has local times
set(ENV{SOURCE_DATE_EPOCH} ${CPACK_VIGIL_EPOCH}) # objcopy writes it into programs
set(archive ${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}.${CPACK_VIGIL_ARCHIVE})
if(CPACK_VIGIL_OBJCOPY)
  file(REMOVE_RECURSE ${parent}/${folder}-debug)
  split_debug_information()
  pack(${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}-debug.${CPACK_VIGIL_ARCHIVE} ${folder}-debug)
endif()
pack(${archive} ${folder})

set(parts "")
foreach(part IN LISTS CPACK_VIGIL_PARTS)
  string(REGEX MATCH "\\|([^|]*)$" unused "${part}")
  if(CMAKE_MATCH_1) # a file in the archive
    string(REGEX REPLACE "\\|[^|]*$" "|${stage}/${CMAKE_MATCH_1}" part "${part}")
  endif()
  list(APPEND parts "${part}")
endforeach()
vigil_write_sbom(${archive} ${CPACK_PACKAGE_NAME} ${CPACK_PACKAGE_VERSION} ${CPACK_VIGIL_EPOCH} ${parts})
list(APPEND CPACK_EXTERNAL_BUILT_PACKAGES ${archive}.spdx.json)
