// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// A program beside others: writes its argument to the log, prints "ready", and ends with its input.
// With --set-user-id it only says whether the process trusts its environment.

#include <QString>

#include <iostream>
#include <string>

#include "base/Logging.h"
#include "platform/Platform.h"

int main(int, char** argv)
{
    const std::string argument = argv[1];
    if (argument == "--set-user-id") {
        std::cout << (platform::isSetUserId() ? "set-user-id" : "plain") << std::endl;
        return 0;
    }
    base::startLogging();
    base::writeLog(QString::fromStdString(argument));
    std::cout << "ready" << std::endl;
    std::cin.get();
    base::stopLogging();
    return 0;
}
