# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# GoogleTest from its sources, in place of an installed one.
include(${CMAKE_CURRENT_LIST_DIR}/../../../cmake/GoogleTestSources.cmake)
set(GTest_FOUND TRUE)
