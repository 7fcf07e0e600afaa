// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TESTS_SUPPORT_FAKEMASTER_H
#define VIGIL_TESTS_SUPPORT_FAKEMASTER_H

#include <QByteArray>
#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTemporaryDir>

#include <functional>
#include <vector>

namespace support {

/// An AgentX master under the control of a test. It can also violate the protocol (RFC 2741).
///
/// Identifiers are texts such as "1.3.6". The agent's own requests are accepted, all others are collected.
///
/// Threads: one with an event loop.
class FakeMaster : public QObject
{
public:
    static constexpr int openCommand = 1;
    static constexpr int registerCommand = 3;
    static constexpr int getCommand = 5;
    static constexpr int getNextCommand = 6;
    static constexpr int testSetCommand = 8;
    static constexpr int commitSetCommand = 9;
    static constexpr int cleanupSetCommand = 11;
    static constexpr int pingCommand = 13;
    static constexpr int responseCommand = 18;

    static constexpr int endOfMibView = 130;

    struct Varbind
    {
        int type = 0;
        QString name;
        QString value; ///< empty for exceptions
    };

    /// An answer of the agent.
    struct Answer
    {
        quint32 packet = 0;
        int error = 0;
        int index = 0;
        std::vector<Varbind> varbinds;
    };

    FakeMaster();

    QString address() const { return m_server.fullServerName(); }

    /// How many sessions have registered their subtree.
    int joins() const { return m_joins; }
    bool waitForJoins(int count);

    /// Ends the connection, at once.
    void hangUp();

    void stopReading();

    /// Sends any bytes.
    void send(const QByteArray& bytes);

    /// Waits until so many answers have come in since the start.
    bool waitForAnswers(size_t count);
    const std::vector<Answer>& answers() const { return m_answers; }

    static QByteArray get(quint32 packet, const QString& name);

    /// One range for each pair of start and end. Without an end the range is open.
    static QByteArray getNext(quint32 packet, const std::vector<std::pair<QString, QString>>& ranges);
    static QByteArray testSet(quint32 packet, const QString& name, int value);
    static QByteArray commitSet(quint32 packet);
    static QByteArray cleanupSet(quint32 packet);

    /// A whole message in little-endian order.
    static QByteArray message(int command, quint32 packet, const QByteArray& body);

    /// Called for each request of the agent. The default accepts it.
    std::function<void(int command, quint32 packet)> onRequest = [this](int, quint32 packet) {
        accept(packet);
    };
    void accept(quint32 packet);

private:
    void takeConnection();
    void readMessages();
    void handle(int command, quint32 packet, const QByteArray& body);

    const QTemporaryDir m_directory;
    QLocalServer m_server;
    QPointer<QLocalSocket> m_agent;
    QByteArray m_received;
    int m_joins = 0;
    std::vector<Answer> m_answers;
};

} // namespace support

#endif
