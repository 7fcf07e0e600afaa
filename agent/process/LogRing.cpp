// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/process/LogRing.h"

#include <QDateTime>
#include <QFileInfo>

#include <utility>

namespace agent {

LogRing::LogRing(QString folder, qint64 maxBytes) : m_folder(std::move(folder)), m_maxBytes(maxBytes) {}

bool LogRing::write(const QByteArray& line)
{
    if (!m_file.isOpen() && !open())
        return false;
    if (m_file.size() + line.size() > m_maxBytes && m_file.size() > 0 && !openNext())
        return false;
    return m_file.write(line) == line.size() && m_file.flush();
}

QString LogRing::path(int index) const
{
    return QStringLiteral("%1/vigil-agent_%2.log").arg(m_folder).arg(index);
}

/// 0 if there is no file yet.
int LogRing::newest() const
{
    int newest = 0;
    QDateTime newestTime;
    for (int index = 0; index < files; ++index) {
        const QFileInfo file(path(index));
        if (file.exists() && (!newestTime.isValid() || file.lastModified() > newestTime)) {
            newest = index;
            newestTime = file.lastModified();
        }
    }
    return newest;
}

bool LogRing::open()
{
    m_index = newest();
    m_file.setFileName(path(m_index));
    return m_file.open(QIODevice::WriteOnly | QIODevice::Append);
}

bool LogRing::openNext()
{
    m_file.close();
    m_index = (m_index + 1) % files;
    m_file.setFileName(path(m_index));
    return m_file.open(QIODevice::WriteOnly | QIODevice::Truncate);
}

} // namespace agent
