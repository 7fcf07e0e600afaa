// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/http/HttpServer.h"

#include <QNetworkProxy>
#include <QSysInfo>
#include <QTcpServer>
#include <QTimer>

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include <microhttpd.h>

#include "agent/core/DelayQueue.h"
#include "agent/core/Descriptors.h"
#include "agent/core/HostAndPort.h"
#include "agent/core/Turn.h"
#include "agent/core/User.h"
#include "agent/http/DaemonWatch.h"
#include "agent/http/TrustedHost.h"

namespace agent {

namespace {

constexpr size_t blockSize = size_t{16} * 1024;

/// Every reply has them. A browser lets no other site read the reply or show it in a frame, and takes
/// scripts and styles from this server's own files alone.
constexpr std::pair<const char*, const char*> fixedHeaders[] = {
    {"Cache-Control", "no-store"},
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src data:; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; require-trusted-types-for 'script'"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
    {"X-Frame-Options", "DENY"},
};

HttpReply refusal(int status, const char* text)
{
    HttpReply reply;
    reply.status = status;
    reply.text = text;
    return reply;
}

QByteArray headerOf(MHD_Connection* connection, const char* name)
{
    return MHD_lookup_connection_value(connection, MHD_HEADER_KIND, name);
}

/// The body of a request would only take time.
bool hasBody(MHD_Connection* connection)
{
    const QByteArray length = headerOf(connection, MHD_HTTP_HEADER_CONTENT_LENGTH);
    return (!length.isEmpty() && length != "0") ||
           !headerOf(connection, MHD_HTTP_HEADER_TRANSFER_ENCODING).isEmpty();
}

/// Makes a reply as its reader takes it, and reports each progressBytes.
class Body
{
public:
    using Progress = std::function<void()>;

    Body(std::unique_ptr<TextPieces> pieces, Turn& turn, Progress progress)
        : m_pieces(std::move(pieces)), m_turn(turn), m_progress(std::move(progress))
    {}

    /// 0 if the rest has to wait for the next turn.
    ssize_t read(char* to, size_t size)
    {
        while (!m_isComplete && m_text.size() < static_cast<int>(size) && !m_turn.isOver())
            makePiece();
        if (m_text.isEmpty())
            return m_isComplete ? MHD_CONTENT_READER_END_OF_STREAM : 0;
        const int count = std::min(m_text.size(), static_cast<int>(size));
        std::memcpy(to, m_text.constData(), static_cast<size_t>(count));
        m_text.remove(0, count);
        reportProgress(count);
        return count;
    }

private:
    void makePiece()
    {
        const int before = m_text.size();
        m_isComplete = !m_pieces->appendTo(m_text);
        m_turn.count(m_text.size() - before);
    }

    void reportProgress(qint64 count)
    {
        m_taken += count;
        if (m_taken < HttpServer::progressBytes)
            return;
        m_taken = 0;
        m_progress();
    }

    const std::unique_ptr<TextPieces> m_pieces;
    Turn& m_turn;
    const Progress m_progress;
    qint64 m_taken = 0; // since the last report
    QByteArray m_text;
    bool m_isComplete = false;
};

ssize_t readBody(void* body, uint64_t, char* to, size_t size)
{
    return static_cast<Body*>(body)->read(to, size);
}

void freeBody(void* body)
{
    delete static_cast<Body*>(body);
}

MHD_Response* responseOf(HttpReply reply, Turn& turn, Body::Progress progress)
{
    if (reply.pieces) {
        auto* body = new Body(std::move(reply.pieces), turn, std::move(progress));
        return MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, blockSize, &readBody, body, &freeBody);
    }
    return MHD_create_response_from_buffer(static_cast<size_t>(reply.text.size()), reply.text.data(),
                                           MHD_RESPMEM_MUST_COPY);
}

/// Whom a connection counts for: a user of this host, or an address.
QByteArray peerName(MHD_socket socket, const sockaddr* address)
{
    const QHostAddress host(address);
    if (!host.isLoopback())
        return host.toString().toLatin1();
    const User user = platform::peerOf(static_cast<std::intptr_t>(socket)).user;
    return userText(user).toLatin1();
}

MHD_socket socketOf(MHD_Connection* connection)
{
    return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

/// Ends a connection. The library then finds it closed, and cleans up.
void shutDown(MHD_socket socket)
{
    constexpr int bothDirections = 2; // under every system, but with several names
    ::shutdown(socket, bothDirections);
}

} // namespace

/// All glue to libmicrohttpd but the waiting, in its mode for an external event loop.
class HttpServer::Daemon
{
public:
    Daemon(Clock& clock, const Handler& handler);
    ~Daemon();

    Error start(const QHostAddress& host, quint16 port);
    const QTcpServer& listener() const { return m_listener; }

private:
    static void handleConnection(void* self, MHD_Connection* connection, void** context,
                                 MHD_ConnectionNotificationCode code);
    static void handleCompleted(void* self, MHD_Connection* connection, void** context,
                                MHD_RequestTerminationCode code);
    static MHD_Result handleRequest(void* self, MHD_Connection* connection, const char* path,
                                    const char* method, const char* version, const char* body,
                                    size_t* bodySize, void** context);

    void add(MHD_Connection* connection);
    bool hasRoomFor(const QByteArray& peer) const;
    std::optional<HttpReply> refusalOf(MHD_Connection* connection, const QByteArray& method) const;
    MHD_Result send(MHD_Connection* connection, HttpReply reply);
    void run();

    const Handler& m_handler;
    const QByteArray m_machineName = QSysInfo::machineHostName().toLatin1();
    QTcpServer m_listener;
    QTimer m_timer;
    Turn m_turn;
    std::map<MHD_socket, QByteArray> m_peers;
    DelayQueue<MHD_socket> m_requests; // those that are late are ended
    MHD_Daemon* m_daemon = nullptr;
    std::unique_ptr<DaemonWatch> m_watch;
    bool m_hasClosed = false; // a connection, in this turn
};

HttpServer::Daemon::Daemon(Clock& clock, const Handler& handler)
    : m_handler(handler), m_requests(clock, requestMs, [](MHD_socket socket, qint64) { shutDown(socket); })
{
    m_timer.setSingleShot(true);
    QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { run(); });
}

HttpServer::Daemon::~Daemon()
{
    if (!m_daemon)
        return;
    m_watch.reset();
    MHD_quiesce_daemon(m_daemon); // the listener closes its socket itself
    MHD_stop_daemon(m_daemon);
}

Error HttpServer::Daemon::start(const QHostAddress& host, quint16 port)
{
    m_listener.setProxy(QNetworkProxy::NoProxy); // Qt would ask one of the environment to listen
    if (!m_listener.listen(host, port))
        return Error(m_listener.errorString());
    m_listener.pauseAccepting(); // the library accepts
    m_daemon = MHD_start_daemon(
        DaemonWatch::daemonFlags, 0, nullptr, nullptr, &Daemon::handleRequest, this, MHD_OPTION_LISTEN_SOCKET,
        static_cast<MHD_socket>(m_listener.socketDescriptor()), MHD_OPTION_CONNECTION_LIMIT, maxConnections,
        MHD_OPTION_CONNECTION_MEMORY_LIMIT, connectionBytes, MHD_OPTION_STRICT_FOR_CLIENT, 1,
        MHD_OPTION_NOTIFY_CONNECTION, &Daemon::handleConnection, this, MHD_OPTION_NOTIFY_COMPLETED,
        &Daemon::handleCompleted, this, MHD_OPTION_END);
    if (!m_daemon)
        return Error(QStringLiteral("libmicrohttpd cannot start"));
    m_watch = std::make_unique<DaemonWatch>(m_daemon, [this] { run(); });
    return {};
}

void HttpServer::Daemon::run()
{
    m_turn.start();
    m_hasClosed = false;
    MHD_run(m_daemon);
    m_watch->update();
    MHD_UNSIGNED_LONG_LONG delayMs = 0;
    if (m_hasClosed)
        m_timer.start(0); // after its limit of connections, the library accepts again in its next turn
    else if (MHD_get_timeout(m_daemon, &delayMs) == MHD_YES)
        m_timer.start(static_cast<int>(delayMs)); // replies have to go on, most likely
    else
        m_timer.stop();
}

void HttpServer::Daemon::handleConnection(void* self, MHD_Connection* connection, void**,
                                          MHD_ConnectionNotificationCode code)
{
    auto* daemon = static_cast<Daemon*>(self);
    if (code == MHD_CONNECTION_NOTIFY_STARTED)
        return daemon->add(connection);
    if (daemon->m_watch)
        daemon->m_watch->forget(socketOf(connection));
    daemon->m_requests.remove(socketOf(connection));
    daemon->m_peers.erase(socketOf(connection));
    daemon->m_hasClosed = true;
}

void HttpServer::Daemon::add(MHD_Connection* connection)
{
    const MHD_socket socket = socketOf(connection);
    const sockaddr* address =
        MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS)->client_addr;
    const QByteArray peer = peerName(socket, address);
    const bool isWelcome = hasRoomFor(peer) && !descriptors::isReserved(static_cast<int>(socket));
    m_peers[socket] = peer;
    m_requests.restart(socket);
    if (!isWelcome)
        shutDown(socket);
}

bool HttpServer::Daemon::hasRoomFor(const QByteArray& peer) const
{
    static const QByteArray root = userText(platform::rootUser()).toLatin1();
    if (peer == root)
        return true;
    const auto count = std::count_if(m_peers.begin(), m_peers.end(),
                                     [&](const auto& connection) { return connection.second == peer; });
    return static_cast<size_t>(count) < maxUserConnections;
}

void HttpServer::Daemon::handleCompleted(void* self, MHD_Connection* connection, void**,
                                         MHD_RequestTerminationCode)
{
    auto* daemon = static_cast<Daemon*>(self);
    const MHD_socket socket = socketOf(connection);
    if (daemon->m_peers.count(socket) > 0)
        daemon->m_requests.restart(socket);
}

/// The library calls twice: once the header is there, and once the body is. A reply to the first call ends
/// the connection.
MHD_Result HttpServer::Daemon::handleRequest(void* self, MHD_Connection* connection, const char* path,
                                             const char* method, const char*, const char*, size_t*,
                                             void** context)
{
    auto* daemon = static_cast<Daemon*>(self);
    if (*context)
        return daemon->send(connection,
                            daemon->m_handler({path, headerOf(connection, MHD_HTTP_HEADER_ACCEPT)}));
    *context = self;
    std::optional<HttpReply> refused = daemon->refusalOf(connection, method);
    return refused ? daemon->send(connection, std::move(*refused)) : MHD_YES;
}

/// Nothing if the request may be answered.
std::optional<HttpReply> HttpServer::Daemon::refusalOf(MHD_Connection* connection,
                                                       const QByteArray& method) const
{
    if (!isTrustedHost(headerOf(connection, MHD_HTTP_HEADER_HOST), m_machineName))
        return refusal(MHD_HTTP_MISDIRECTED_REQUEST,
                       "The Host header must be an address, localhost or this machine's name.\n");
    if (method != MHD_HTTP_METHOD_GET && method != MHD_HTTP_METHOD_HEAD)
        return refusal(MHD_HTTP_METHOD_NOT_ALLOWED, "Only GET and HEAD are served.\n");
    if (hasBody(connection))
        return refusal(MHD_HTTP_BAD_REQUEST, "A request must not have a body.\n");
    return std::nullopt;
}

MHD_Result HttpServer::Daemon::send(MHD_Connection* connection, HttpReply reply)
{
    const auto status = static_cast<unsigned int>(reply.status);
    const QByteArray contentType = reply.contentType;
    MHD_Response* response = responseOf(
        std::move(reply), m_turn, [this, socket = socketOf(connection)] { m_requests.restart(socket); });
    if (!response)
        return MHD_NO;
    MHD_add_response_header(response, MHD_HTTP_HEADER_CONTENT_TYPE, contentType.constData());
    for (const auto& [name, value] : fixedHeaders)
        MHD_add_response_header(response, name, value);
    if (status == MHD_HTTP_METHOD_NOT_ALLOWED)
        MHD_add_response_header(response, MHD_HTTP_HEADER_ALLOW, "GET, HEAD");
    const MHD_Result result = MHD_queue_response(connection, status, response);
    MHD_destroy_response(response);
    return result;
}

HttpServer::HttpServer(Clock& clock, Handler handler) : m_clock(clock), m_handler(std::move(handler)) {}

HttpServer::~HttpServer() = default;

Error HttpServer::listen(const QHostAddress& host, quint16 port)
{
    auto daemon = std::make_unique<Daemon>(m_clock, m_handler);
    if (Error error = daemon->start(host, port))
        return error;
    m_daemon = std::move(daemon);
    return {};
}

QString HttpServer::address() const
{
    if (!m_daemon)
        return {};
    return hostAndPort(m_daemon->listener().serverAddress(), m_daemon->listener().serverPort());
}

} // namespace agent
