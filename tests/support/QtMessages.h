// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_QTMESSAGES_H
#define VIGIL_SUPPORT_QTMESSAGES_H

#include <QMutex>
#include <QStringList>
#include <QtGlobal>

namespace support {

/// Collects the messages of Qt's debug output while the object lives. Only one object may exist at a time;
/// messages may come from any thread.
class QtMessages
{
public:
    QtMessages() : m_previous(qInstallMessageHandler(&QtMessages::collect)) { collected().clear(); }
    ~QtMessages() { qInstallMessageHandler(m_previous); }
    QtMessages(const QtMessages&) = delete;
    QtMessages& operator=(const QtMessages&) = delete;

    QStringList all() const
    {
        const QMutexLocker lock(&mutex());
        return collected();
    }

private:
    static void collect(QtMsgType, const QMessageLogContext&, const QString& text)
    {
        const QMutexLocker lock(&mutex());
        collected() += text;
    }

    static QStringList& collected()
    {
        static QStringList texts;
        return texts;
    }

    static QMutex& mutex()
    {
        static QMutex mutex;
        return mutex;
    }

    const QtMessageHandler m_previous;
};

} // namespace support

#endif
