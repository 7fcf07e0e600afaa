# SPDX-FileCopyrightText: 2026 The Vigil authors
# SPDX-License-Identifier: MIT

# Headers of Qt and the standard library that most sources need, compiled once a target. Sources include what they use
# all the same: -D CMAKE_DISABLE_PRECOMPILE_HEADERS=ON must build, too.

set(VIGIL_COMMON_HEADERS
  <algorithm> <functional> <map> <memory> <mutex> <string> <utility> <vector>
  <QByteArray> <QCoreApplication> <QDateTime> <QDir> <QFile> <QHostAddress> <QObject> <QString> <QStringList>
  <QTcpServer> <QTcpSocket> <QThread> <QTimer> <QtGlobal>)

# ccache takes a compilation with a precompiled header for its own only if it may overlook two things: the macros that
# the header defines and its time stamp.
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "^[^;]*ccache$")
  set(CMAKE_CXX_COMPILER_LAUNCHER
    ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CMAKE_CXX_COMPILER_LAUNCHER})
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  # The same input gives the same precompiled header, so that ccache knows it again.
  add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
endif()
