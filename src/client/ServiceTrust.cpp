// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ServiceTrust.h"

#include <QHostAddress>
#include <QTcpSocket>

#include "base/Logging.h"
#include "base/Printable.h"
#include "platform/Platform.h"

namespace {

constexpr const char* userVariable = "VIGIL_SERVICE_USER";
constexpr const char* serviceUser = "vigil-agent";
constexpr qint64 reportIntervalMs = 60'000;

platform::User addedUser()
{
    const QString name = platform::environmentVariable(userVariable);
    if (name.isNull() || !platform::mayLibraryAskForPeers())
        return std::nullopt;
    platform::User user = platform::userNamed(name.toStdString());
    if (!user)
        base::writeLog(QStringLiteral("___ERROR___ %1 is \"%2\", which names no user. It adds no one.")
                           .arg(QLatin1String(userVariable), base::printable(name)));
    return user;
}

} // namespace

ServiceTrust::ServiceTrust() : m_addedUser(addedUser()) {}

bool ServiceTrust::isTrusted(const QTcpSocket& socket)
{
    if (!platform::mayLibraryAskForPeers())
        return true;
    const platform::User user = platform::peerOf(socket.socketDescriptor()).user;
    if (!user)
        return platform::hasDescriptors(1); // without one the system could not be asked
    if (mayServe(user))
        return true;
    report(socket, user);
    return false;
}

bool ServiceTrust::mayServe(const platform::User& user) const
{
    return user == platform::rootUser() || user == platform::ownUser() || user == m_addedUser ||
           user == platform::userNamed(serviceUser); // last: it may ask a directory service
}

void ServiceTrust::report(const QTcpSocket& socket, const platform::User& user)
{
    if (m_lastReport.isValid() && !m_lastReport.hasExpired(reportIntervalMs))
        return;
    m_lastReport.start();
    base::writeLog(
        QStringLiteral("___ERROR___ The service at %1:%2 belongs to user %3, not to root, to this user, to "
                       "\"%4\" or to %5. Not connecting.")
            .arg(socket.peerAddress().toString())
            .arg(socket.peerPort())
            .arg(QString::fromStdString(user.value_or(std::string())))
            .arg(QLatin1String(serviceUser), QLatin1String(userVariable)));
}
