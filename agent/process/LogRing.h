// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_AGENT_PROCESS_LOGRING_H
#define VIGIL_AGENT_PROCESS_LOGRING_H

#include <QFile>
#include <QString>

namespace agent {

/// Log files vigil-agent_0.log to vigil-agent_4.log in a folder. A full file is followed by the next one, and
/// the last by the first, whose old lines are gone. A new run goes on in the file written last.
///
/// Threads: one at a time.
/// Failure: write() returns false.
class LogRing
{
public:
    static constexpr int files = 5;

    /// A file is full after maxBytes.
    explicit LogRing(QString folder, qint64 maxBytes = 2'000'000);

    bool write(const QByteArray& line);

private:
    QString path(int index) const;
    int newest() const;
    bool open();
    bool openNext();

    const QString m_folder;
    const qint64 m_maxBytes;
    int m_index = 0;
    QFile m_file;
};

} // namespace agent

#endif
