# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Compiles a C program for Microsoft's ABI, links it with vigil.lib by a linker that works as Microsoft's does, and runs
# it. Run by CTest, see CMakeLists.txt.

function(run_step)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${ARGN} ended with ${result}:\n${output}")
  endif()
endfunction()

file(MAKE_DIRECTORY ${WORK_DIR})
run_step(${CLANG} --target=x86_64-pc-windows-msvc -std=c11 -ffreestanding -Wall -Wextra -Wpedantic -Werror
  -I${INCLUDE_DIR} -I${BUILD_INCLUDE_DIR} -c ${SOURCE} -o ${WORK_DIR}/program.obj)
file(WRITE ${WORK_DIR}/kernel32.def "LIBRARY kernel32.dll\nEXPORTS\n  ExitProcess\n")
run_step(${DLLTOOL} -m i386:x86-64 -d ${WORK_DIR}/kernel32.def -l ${WORK_DIR}/kernel32.lib)
run_step(${LINKER} /nodefaultlib /subsystem:console /entry:entry /out:${WORK_DIR}/program.exe
  ${WORK_DIR}/program.obj ${IMPORT_LIBRARY} ${WORK_DIR}/kernel32.lib)

set(ENV{VIGIL_SERVICE_PORT} 1)
set(ENV{VIGIL_LOG_DIR} ${DRIVE}${WORK_DIR}/log)
set(ENV{WINEPATH} ${DRIVE}${DLL_DIR})
execute_process(COMMAND ${EMULATOR} ${WORK_DIR}/program.exe RESULT_VARIABLE result OUTPUT_VARIABLE output)
file(REMOVE_RECURSE ${WORK_DIR})
if(NOT result EQUAL 42)
  message(FATAL_ERROR "The program ended with ${result}:\n${output}")
endif()
