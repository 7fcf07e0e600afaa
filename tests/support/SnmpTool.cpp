// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "SnmpTool.h"

#include <QProcess>
#include <QTemporaryDir>

#include "RunUntil.h"

namespace support {

namespace {

// A busy machine may reply late; a request may also reach an snmpd or agent about to be ended
// before the answer. So a tool asks every two seconds, until the deadline of the tests.
const QStringList patientOptions{QStringLiteral("-t2"), QStringLiteral("-r30")};
constexpr int toolDeadlineMs = deadlineMs + 10'000;

} // namespace

SnmpTool::SnmpTool(const QString& address, const QStringList& credentials)
    : m_address(address), m_credentials(credentials)
{}

QStringList SnmpTool::community(const QString& name)
{
    return {QStringLiteral("-v2c"), QStringLiteral("-c"), name};
}

QProcessEnvironment SnmpTool::environment(const QString& privateDirectory)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("MIBDIRS"), QStringLiteral(VIGIL_MIBDIRS));
    environment.remove(QStringLiteral("MIBS"));
    environment.insert(QStringLiteral("SNMPCONFPATH"), privateDirectory);
    environment.insert(QStringLiteral("SNMP_PERSISTENT_DIR"), privateDirectory);
    return environment;
}

SnmpTool::Result SnmpTool::run(const QString& program, const QStringList& operands,
                               const QStringList& options) const
{
    static const QTemporaryDir privateDirectory;
    QProcess process;
    process.setProcessEnvironment(environment(privateDirectory.path()));
    process.start(program, QStringList{QStringLiteral("-m"), QStringLiteral("VIGIL-AGENT-MIB")} +
                               patientOptions + m_credentials + options + QStringList{m_address} + operands);
    if (!runUntil([&] { return process.state() == QProcess::NotRunning; }, toolDeadlineMs)) {
        process.kill();
        process.waitForFinished();
    }
    Result result;
    if (process.error() == QProcess::UnknownError && process.exitStatus() == QProcess::NormalExit)
        result.exitCode = process.exitCode();
    result.out = QString::fromUtf8(process.readAllStandardOutput()).trimmed();
    result.err = QString::fromUtf8(process.readAllStandardError()).trimmed();
    return result;
}

QString SnmpTool::get(const QString& id) const
{
    return run(QStringLiteral("snmpget"), {id}, {QStringLiteral("-OqvUe")}).out;
}

SnmpTool::Result SnmpTool::set(const QStringList& triples) const
{
    // One attempt: a repeated SET would ask the applications twice.
    return run(QStringLiteral("snmpset"), triples,
               {QStringLiteral("-r0"), QStringLiteral("-t60"), QStringLiteral("-OqvUe")});
}

QStringList SnmpTool::walk(const QString& root, const QString& program) const
{
    const Result result = run(program, {root}, {QStringLiteral("-OqnUe")});
    return result.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool SnmpTool::waitFor(const QString& id, const QString& value) const
{
    return runUntil([&] { return get(id) == value; });
}

} // namespace support
