// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "agent/netsnmp/ManagerSocket.h"

#include <algorithm>

#include <mstcpip.h>
#include <winsvc.h>
#include <ws2tcpip.h>

#ifndef SIO_UDP_CONNRESET
#define SIO_UDP_CONNRESET _WSAIOW(IOC_VENDOR, 12)
#endif

namespace agent::managerSocket {

namespace {

/// Net-SNMP keeps sockets as int; the system's handles fit.
SOCKET toSocket(int socket)
{
    return static_cast<SOCKET>(socket);
}

// --- Exclusive use

/// Copies an option of a socket, if that has it.
void copyOption(SOCKET from, SOCKET to, int level, int option)
{
    DWORD value = 0;
    int size = sizeof value;
    if (getsockopt(from, level, option, reinterpret_cast<char*>(&value), &size) == 0)
        setsockopt(to, level, option, reinterpret_cast<const char*>(&value), size);
}

void setUp(SOCKET socket, SOCKET original, bool isStream)
{
    const DWORD on = 1;
    setsockopt(socket, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<const char*>(&on), sizeof on);
    copyOption(original, socket, IPPROTO_IPV6, IPV6_V6ONLY);
    if (isStream)
        return;
    for (const int option : {SO_RCVBUF, SO_SNDBUF})
        copyOption(original, socket, SOL_SOCKET, option);
    copyOption(original, socket, IPPROTO_IP, IP_PKTINFO);
    // Otherwise the answer to a manager that is gone fails the next read of everyone's requests.
    DWORD off = 0;
    DWORD size = 0;
    WSAIoctl(socket, SIO_UDP_CONNRESET, &off, sizeof off, nullptr, 0, &size, nullptr, nullptr);
}

bool start(SOCKET socket, const sockaddr_storage& address, int size, bool isStream)
{
    if (bind(socket, reinterpret_cast<const sockaddr*>(&address), size) != 0)
        return false;
    u_long on = 1;
    return !isStream || (ioctlsocket(socket, FIONBIO, &on) == 0 && listen(socket, SOMAXCONN) == 0);
}

/// Replaces the socket by an exclusive one for the same address. Net-SNMP's own one permits other programs to
/// share the port, and an option set after bind() has no effect.
bool makeExclusive(netsnmp_transport& listener)
{
    const SOCKET original = toSocket(listener.sock);
    sockaddr_storage address = {};
    int size = sizeof address;
    if (getsockname(original, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return false;
    const bool isStream = (listener.flags & NETSNMP_TRANSPORT_FLAG_STREAM) != 0;
    const SOCKET own = socket(address.ss_family, isStream ? SOCK_STREAM : SOCK_DGRAM, 0);
    if (own == INVALID_SOCKET)
        return false;
    setUp(own, original, isStream);
    closesocket(original);
    listener.sock = static_cast<int>(own);
    return start(own, address, size, isStream);
}

// --- Whole answers

bool waitUntilWritable(SOCKET socket)
{
    WSAPOLLFD watched = {socket, POLLOUT, 0};
    for (int waitedMs = 0; waitedMs < longestStandstillMs; waitedMs += standstillStepMs) {
        if (WSAPoll(&watched, 1, standstillStepMs) > 0)
            return true;
    }
    return false;
}

/// A socket may be blocking until Qt watches it. Afterwards the system may take a part of an answer only.
int sendWhole(netsnmp_transport* transport, const void* data, int size, void**, int*)
{
    const SOCKET socket = toSocket(transport->sock);
    u_long on = 1;
    ioctlsocket(socket, FIONBIO, &on);
    int sent = 0;
    while (sent < size) {
        const int step = send(socket, static_cast<const char*>(data) + sent, size - sent, 0);
        if (step > 0) {
            sent += step;
        } else if (WSAGetLastError() != WSAEWOULDBLOCK || !waitUntilWritable(socket)) {
            shutdown(socket, SD_BOTH); // no other answer can follow a part of one
            return -1;
        }
    }
    return size;
}

// --- The system's own SNMP service

struct CloseService
{
    void operator()(SC_HANDLE handle) const { CloseServiceHandle(handle); }
};

using Service = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, CloseService>;

bool isSnmpServiceRunning()
{
    const Service manager(OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (!manager)
        return false;
    const Service service(OpenServiceW(manager.get(), L"SNMP", SERVICE_QUERY_STATUS));
    SERVICE_STATUS status = {};
    return service && QueryServiceStatus(service.get(), &status) && status.dwCurrentState == SERVICE_RUNNING;
}

} // namespace

std::vector<int> listOf(netsnmp_large_fd_set& set, int)
{
    std::vector<int> sockets;
    for (u_int index = 0; index < set.lfs_setptr->fd_count; ++index)
        sockets.push_back(static_cast<int>(set.lfs_setptr->fd_array[index]));
    return sockets;
}

QHostAddress peerOf(int socket)
{
    sockaddr_storage address = {};
    int size = sizeof address;
    if (getpeername(toSocket(socket), reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return {};
    return QHostAddress(reinterpret_cast<const sockaddr*>(&address));
}

void close(int socket)
{
    closesocket(toSocket(socket));
}

bool prepare(netsnmp_transport& listener)
{
    if (listener.flags & NETSNMP_TRANSPORT_FLAG_STREAM)
        listener.f_send = &sendWhole; // connections inherit it
    return makeExclusive(listener);
}

QString reasonFor(const QString& address)
{
    if (!address.endsWith(QLatin1String(":161")) || !isSnmpServiceRunning())
        return {};
    return QStringLiteral(
               "Windows' own SNMP service runs and has the port 161. Stop it (sc stop SNMP) and keep it "
               "from starting (sc config SNMP start= disabled), or choose another port, for example %1")
        .arg(QString(address).replace(QLatin1String(":161"), QLatin1String(":1161")));
}

} // namespace agent::managerSocket
