# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Fails when smilint says anything about MODULE; its exit code says nothing.
#
# INDEX is allowed to fail: SMIv2 cannot express a bound on the sum of the index texts.
set(ENV{SMIPATH} "${SMIPATH}")
execute_process(
  COMMAND ${SMILINT} -l 6 -i index-exceeds-too-large ${MODULE}
  OUTPUT_VARIABLE findings
  ERROR_VARIABLE findings
  RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT "${findings}" STREQUAL "")
  message(FATAL_ERROR "smilint (${result}):\n${findings}")
endif()
