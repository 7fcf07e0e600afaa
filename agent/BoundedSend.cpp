#include "BoundedSend.h"

#include <QElapsedTimer>

#include <cerrno>

#include <poll.h>
#include <sys/socket.h>

namespace agent {

namespace {

constexpr int patienceMs = 500;

bool waitUntilWritable(int descriptor, const QElapsedTimer& waited)
{
    const qint64 left = patienceMs - waited.elapsed();
    pollfd watched = {descriptor, POLLOUT, 0};
    return left > 0 && poll(&watched, 1, static_cast<int>(left)) > 0;
}

int sendOrGiveUp(netsnmp_transport* transport, const void* data, int size, void**, int*)
{
    QElapsedTimer waited;
    waited.start();
    int sent = 0;
    while (sent < size) {
        const ssize_t step = send(transport->sock, static_cast<const char*>(data) + sent,
                                  static_cast<size_t>(size - sent), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (step >= 0) {
            sent += static_cast<int>(step);
        } else if (errno != EINTR && (errno != EAGAIN || !waitUntilWritable(transport->sock, waited))) {
            shutdown(transport->sock, SHUT_RDWR); // half a message cannot be followed by another one
            return -1;
        }
    }
    return size;
}

} // namespace

void boundSends(netsnmp_transport& transport)
{
    transport.f_send = &sendOrGiveUp;
}

} // namespace agent
