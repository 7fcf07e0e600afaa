// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "ApplicationProcess.h"

#include <QProcessEnvironment>

#include "RunUntil.h"

namespace support {

ApplicationProcess::ApplicationProcess(quint16 agentPort, const QString& name) : m_name(name)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("VIGIL_SERVICE_PORT"), QString::number(agentPort));
    environment.insert(QStringLiteral("VIGIL_LOG_DIR"), m_logDirectory.path());
    m_process.setProcessEnvironment(environment);
    m_process.setStandardErrorFile(QProcess::nullDevice());
}

ApplicationProcess::~ApplicationProcess()
{
    if (m_process.state() != QProcess::NotRunning)
        kill();
}

bool ApplicationProcess::start()
{
    m_process.start(QStringLiteral(VIGIL_REAL_APPLICATION), {m_name});
    return m_process.waitForStarted();
}

void ApplicationProcess::publish(int value)
{
    m_process.write(QByteArray::number(value) + '\n');
}

bool ApplicationProcess::stop()
{
    m_process.closeWriteChannel();
    return runUntil([this] { return m_process.state() == QProcess::NotRunning; });
}

bool ApplicationProcess::kill()
{
    m_process.kill();
    return runUntil([this] { return m_process.state() == QProcess::NotRunning; });
}

QString ApplicationProcess::valueName()
{
    return QStringLiteral("vigilPerfDataValue.\"test\".\"application\".\"value\"");
}

} // namespace support
