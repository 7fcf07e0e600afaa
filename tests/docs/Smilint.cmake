# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Fails when smilint says anything about MODULE; its exit code says nothing.
#
# The index that it may complain about: only the sum of the index texts is bounded, which SMIv2 cannot express.
set(ENV{SMIPATH} "${SMIPATH}")
execute_process(
  COMMAND ${SMILINT} -l 6 -i index-exceeds-too-large ${MODULE}
  OUTPUT_VARIABLE findings
  ERROR_VARIABLE findings
  RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT "${findings}" STREQUAL "")
  message(FATAL_ERROR "smilint (${result}):\n${findings}")
endif()
