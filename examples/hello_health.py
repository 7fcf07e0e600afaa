#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT
#
# The program hello_health.cpp in Python, by ctypes. The argument is the library, libvigil.so.1 by default.

import ctypes
import sys

vigil = ctypes.CDLL(sys.argv[1] if len(sys.argv) > 1 else "libvigil.so.1")
vigil.vigil_code_name.restype = ctypes.c_char_p


class Range(ctypes.Structure):
    _fields_ = [("mode", ctypes.c_int), ("lower", ctypes.c_double), ("upper", ctypes.c_double)]


NORMAL = 1
WARNING_RANGE = 0
FunctionCallback = ctypes.CFUNCTYPE(None, ctypes.c_void_p, ctypes.c_int)


def call(name, *arguments):
    code = getattr(vigil, name)(*arguments)
    if code != 0:
        raise RuntimeError(f"{name}: {vigil.vigil_code_name(code).decode()}")


def text(name, handle):
    size = ctypes.c_size_t(0)
    call(name, handle, None, ctypes.byref(size))
    buffer = ctypes.create_string_buffer(size.value)
    call(name, handle, buffer, ctypes.byref(size))
    return buffer.value.decode()


@FunctionCallback
def on_function(_user, number):  # on a thread of the library
    print(f"A manager has called function {number}.")


check = ctypes.c_void_p()
seconds = ctypes.c_void_p()
call("vigil_check_create", b"hello", b"health", ctypes.byref(check))
call("vigil_check_set_description", check, b"Hello, health")
call("vigil_check_set_function", check, on_function, None)
call("vigil_scalar_create", check, b"seconds", ctypes.byref(seconds))
call("vigil_scalar_set_unit", seconds, b" s")
up_to_3 = Range(NORMAL, -sys.float_info.max, 3)
call("vigil_scalar_set_range", seconds, WARNING_RANGE, ctypes.byref(up_to_3))

for second in range(1, 6):
    call("vigil_scalar_set_value", seconds, ctypes.c_double(second))
    call("vigil_check_update", check)
    print(text("vigil_check_summary", check))

call("vigil_metric_free", seconds)
call("vigil_check_free", check)
