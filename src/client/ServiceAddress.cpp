// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/ServiceAddress.h"

#include "base/Logging.h"
#include "base/Printable.h"
#include "base/wire/DefaultServiceAddress.h"
#include "platform/Platform.h"

namespace {

constexpr const char* portVariable = "VIGIL_SERVICE_PORT";
constexpr int noPort = 0;

int servicePort()
{
    const QString text = platform::environmentVariable(portVariable);
    if (text.isNull())
        return base::defaultServicePort;
    bool isNumber = false;
    const int port = text.toInt(&isNumber);
    if (isNumber && port >= 1 && port <= 65535)
        return port;
    base::writeLog(
        QStringLiteral("___ERROR___ %1 is \"%2\", not a port from 1 to 65535 or \"off\". Not connecting.")
            .arg(QLatin1String(portVariable), base::printable(text)));
    return noPort;
}

} // namespace

base::ConnectionSettings serviceAddress()
{
    base::ConnectionSettings settings;
    settings.host = QLatin1String(base::defaultServiceHost);
    settings.port = servicePort();
    return settings;
}

bool isServiceOff()
{
    return platform::environmentVariable(portVariable) == QLatin1String("off");
}
