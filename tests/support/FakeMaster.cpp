// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "FakeMaster.h"

#include <QDataStream>
#include <QIODevice>
#include <QStringList>

#include <utility>

#include "RunUntil.h"

namespace support {

namespace {

constexpr int headerSize = 20;
constexpr quint32 session = 7;
constexpr quint32 transaction = 8;
constexpr int integerType = 2;
constexpr int textType = 4;

/// A message's fields in its own order of bytes.
class Body : public QDataStream
{
public:
    explicit Body(const QByteArray& bytes) : QDataStream(bytes) { setByteOrder(LittleEndian); }
    explicit Body(QByteArray* bytes) : QDataStream(bytes, QIODevice::WriteOnly)
    {
        setByteOrder(LittleEndian);
    }
};

void writeIdentifier(Body& body, const QString& name)
{
    const QStringList arcs = name.split(QLatin1Char('.'), Qt::SkipEmptyParts);
    body << static_cast<quint8>(arcs.size()) << quint8(0) << quint8(0) << quint8(0);
    for (const QString& arc : arcs)
        body << arc.toUInt();
}

QString readIdentifier(Body& body)
{
    quint8 count = 0;
    quint8 prefix = 0;
    quint16 unused = 0;
    body >> count >> prefix >> unused;
    QStringList arcs;
    if (prefix != 0)
        arcs << QStringLiteral("1.3.6.1") << QString::number(prefix);
    for (int i = 0; i < count; ++i) {
        quint32 arc = 0;
        body >> arc;
        arcs << QString::number(arc);
    }
    return arcs.join(QLatin1Char('.'));
}

QString readValue(Body& body, int type)
{
    if (type != integerType && type != textType)
        return {};
    quint32 number = 0; // or the length of a text
    body >> number;
    if (type == integerType)
        return QString::number(static_cast<qint32>(number));
    QByteArray text(static_cast<int>(number), '\0');
    body.readRawData(text.data(), text.size());
    body.skipRawData((4 - text.size() % 4) % 4);
    return QString::fromUtf8(text);
}

} // namespace

FakeMaster::FakeMaster()
{
    m_server.listen(m_directory.filePath(QStringLiteral("master")));
    connect(&m_server, &QLocalServer::newConnection, this, &FakeMaster::takeConnection);
}

bool FakeMaster::waitForJoins(int count)
{
    return runUntil([&] { return m_joins >= count; });
}

void FakeMaster::hangUp()
{
    if (m_agent)
        m_agent->abort();
}

void FakeMaster::stopReading()
{
    m_agent->setReadBufferSize(1);
}

void FakeMaster::send(const QByteArray& bytes)
{
    if (!m_agent)
        return;
    m_agent->write(bytes);
    m_agent->flush();
}

bool FakeMaster::waitForAnswers(size_t count)
{
    return runUntil([&] { return m_answers.size() >= count; });
}

QByteArray FakeMaster::message(int command, quint32 packet, const QByteArray& body)
{
    QByteArray bytes;
    Body(&bytes) << quint8(1) << static_cast<quint8>(command) << quint16(0) << session << transaction
                 << packet << static_cast<quint32>(body.size());
    return bytes + body;
}

QByteArray FakeMaster::get(quint32 packet, const QString& name)
{
    QByteArray bytes;
    Body body(&bytes);
    writeIdentifier(body, name);
    writeIdentifier(body, QString());
    return message(getCommand, packet, bytes);
}

QByteArray FakeMaster::getNext(quint32 packet, const std::vector<std::pair<QString, QString>>& ranges)
{
    QByteArray bytes;
    Body body(&bytes);
    for (const auto& [start, end] : ranges) {
        writeIdentifier(body, start);
        writeIdentifier(body, end);
    }
    return message(getNextCommand, packet, bytes);
}

QByteArray FakeMaster::testSet(quint32 packet, const QString& name, int value)
{
    QByteArray bytes;
    Body body(&bytes);
    body << static_cast<quint16>(integerType) << quint16(0);
    writeIdentifier(body, name);
    body << value;
    return message(testSetCommand, packet, bytes);
}

QByteArray FakeMaster::commitSet(quint32 packet)
{
    return message(commitSetCommand, packet, {});
}

QByteArray FakeMaster::cleanupSet(quint32 packet)
{
    return message(cleanupSetCommand, packet, {});
}

void FakeMaster::accept(quint32 packet)
{
    send(message(responseCommand, packet, QByteArray(8, '\0')));
}

void FakeMaster::takeConnection()
{
    m_agent = m_server.nextPendingConnection();
    m_received.clear();
    connect(m_agent, &QLocalSocket::readyRead, this, &FakeMaster::readMessages);
    connect(m_agent, &QLocalSocket::disconnected, m_agent, &QObject::deleteLater);
    readMessages();
}

void FakeMaster::readMessages()
{
    if (m_agent->readBufferSize() != 0)
        return;
    m_received += m_agent->readAll();
    while (m_received.size() >= headerSize) {
        Body header(m_received);
        quint8 command = 0;
        quint8 flags = 0;
        quint32 packet = 0;
        quint32 length = 0;
        header.skipRawData(1);
        header >> command >> flags;
        header.skipRawData(9);
        // The agent writes its own requests in the order of its host.
        header.setByteOrder((flags & 0x10) != 0 ? QDataStream::BigEndian : QDataStream::LittleEndian);
        header >> packet >> length;
        if (static_cast<quint32>(m_received.size()) < headerSize + length)
            return;
        const QByteArray body = m_received.mid(headerSize, static_cast<int>(length));
        m_received.remove(0, headerSize + static_cast<int>(length));
        handle(command, packet, body);
        if (!m_agent)
            return;
    }
}

void FakeMaster::handle(int command, quint32 packet, const QByteArray& body)
{
    if (command != responseCommand) {
        m_joins += command == registerCommand ? 1 : 0;
        onRequest(command, packet);
        return;
    }
    Body fields(body);
    fields.skipRawData(4);
    quint16 error = 0;
    quint16 index = 0;
    fields >> error >> index;
    Answer answer{packet, error, index, {}};
    while (!fields.atEnd()) {
        quint16 type = 0;
        quint16 unused = 0;
        fields >> type >> unused;
        const QString name = readIdentifier(fields);
        answer.varbinds.push_back({type, name, readValue(fields, type)});
    }
    m_answers.push_back(std::move(answer));
}

} // namespace support
