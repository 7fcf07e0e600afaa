// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_SNMPTOOL_H
#define VIGIL_SUPPORT_SNMPTOOL_H

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include "QtPrinters.h"

namespace support {

/// A manager: runs Net-SNMP's command line tools against one address, with the names of VIGIL-MIB
/// and VIGIL-AGENT-MIB.
///
/// Threads: one with an event loop, which keeps running while a tool runs, so that fake applications of the
/// same test can answer. Failure: a tool that cannot be run or does not end gives the exit code -1.
class SnmpTool
{
public:
    struct Result
    {
        int exitCode = -1;
        QString out;
        QString err;
    };

    /// credentials as the tools take them.
    explicit SnmpTool(const QString& address, const QStringList& credentials = readOnlyCommunity());

    static QStringList community(const QString& name);
    static QStringList readOnlyCommunity() { return community(QStringLiteral("public")); }

    /// For programs of Net-SNMP: they find all modules, read no configuration of the user who runs the tests
    /// and leave none behind.
    static QProcessEnvironment environment(const QString& privateDirectory);

    /// program OPTIONS credentials address operands
    Result run(const QString& program, const QStringList& operands, const QStringList& options = {}) const;

    /// The value that snmpget prints for a full numeric or symbolic identifier.
    QString get(const QString& id) const;

    /// One SET of (identifier, type, value) triples.
    Result set(const QStringList& triples) const;

    /// The lines "identifier value" of a snmpbulkwalk, numeric.
    QStringList walk(const QString& root, const QString& program = QStringLiteral("snmpbulkwalk")) const;

    /// Waits until get() gives the value.
    bool waitFor(const QString& id, const QString& value) const;

private:
    QString m_address;
    QStringList m_credentials;
};

} // namespace support

#endif
