// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "Browser.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcessEnvironment>
#include <QStandardPaths>

#include "RunUntil.h"

namespace support {

QString Browser::program()
{
    for (const char* name : {"chromium", "chromium-browser", "google-chrome"}) {
        const QString path = QStandardPaths::findExecutable(QLatin1String(name));
        if (!path.isEmpty())
            return path;
    }
    return {};
}

Browser::~Browser()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    command(QStringLiteral("Browser.close"));
    if (!m_process.waitForFinished(deadlineMs))
        m_process.kill();
    m_process.waitForFinished();
}

/// The browser reads commands from descriptor 3 and answers on 4.
bool Browser::start()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
        environment.insert(QLatin1String(variable), m_profile.path());
    // The profile by a short name: the browser makes a socket below it, and a socket's path has 107 bytes.
    environment.insert(QStringLiteral("TMPDIR"), QStringLiteral("/proc/self/cwd"));
    m_process.setWorkingDirectory(m_profile.path());
    m_process.setProcessEnvironment(environment);
    m_process.start(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("exec \"$@\" 3<&0 4>&1 >/dev/null"), QStringLiteral("sh"),
         program(), QStringLiteral("--headless=new"), QStringLiteral("--remote-debugging-pipe"),
         QStringLiteral("--no-sandbox"), QStringLiteral("--disable-gpu"), QStringLiteral("--no-first-run"),
         QStringLiteral("--disable-background-networking"), QStringLiteral("--disable-dev-shm-usage"),
         QStringLiteral("--no-proxy-server"), QStringLiteral("--user-data-dir=") + m_profile.path()});
    if (!m_process.waitForStarted())
        return false;
    const QJsonObject target = command(QStringLiteral("Target.createTarget"),
                                       {{QStringLiteral("url"), QStringLiteral("about:blank")}});
    const QJsonObject session = command(
        QStringLiteral("Target.attachToTarget"),
        {{QStringLiteral("targetId"), target[QLatin1String("targetId")]}, {QStringLiteral("flatten"), true}});
    m_session = session[QLatin1String("sessionId")].toString();
    return !m_session.isEmpty();
}

void Browser::open(const QString& url)
{
    command(QStringLiteral("Page.navigate"), {{QStringLiteral("url"), url}});
}

QJsonValue Browser::evaluate(const QString& expression)
{
    const QJsonObject result =
        command(QStringLiteral("Runtime.evaluate"),
                {{QStringLiteral("expression"), expression}, {QStringLiteral("returnByValue"), true}});
    return result[QLatin1String("result")].toObject()[QLatin1String("value")];
}

bool Browser::waitFor(const QString& expression)
{
    return askUntil([&] { return evaluate(expression).toBool(); });
}

void Browser::setSize(int width, int height)
{
    command(QStringLiteral("Emulation.setDeviceMetricsOverride"), {{QStringLiteral("width"), width},
                                                                   {QStringLiteral("height"), height},
                                                                   {QStringLiteral("deviceScaleFactor"), 1},
                                                                   {QStringLiteral("mobile"), false}});
}

void Browser::setDark(bool isDark)
{
    const QJsonObject feature = {
        {QStringLiteral("name"), QStringLiteral("prefers-color-scheme")},
        {QStringLiteral("value"), isDark ? QStringLiteral("dark") : QStringLiteral("light")}};
    command(QStringLiteral("Emulation.setEmulatedMedia"),
            {{QStringLiteral("features"), QJsonArray{feature}}});
}

void Browser::press(const QString& key)
{
    const bool isEnter = key == QLatin1String("Enter");
    const bool isText = key.size() == 1 || isEnter;
    QJsonObject event = {{QStringLiteral("type"), QStringLiteral("keyDown")},
                         {QStringLiteral("key"), key},
                         {QStringLiteral("code"), key},
                         {QStringLiteral("text"), !isText   ? QString()
                                                  : isEnter ? QStringLiteral("\r")
                                                            : key}};
    if (isEnter)
        event[QStringLiteral("windowsVirtualKeyCode")] = 13;
    else if (key == QLatin1String("Tab"))
        event[QStringLiteral("windowsVirtualKeyCode")] = 9;
    else if (key == QLatin1String("Escape"))
        event[QStringLiteral("windowsVirtualKeyCode")] = 27;
    command(QStringLiteral("Input.dispatchKeyEvent"), event);
    event[QStringLiteral("type")] = QStringLiteral("keyUp");
    command(QStringLiteral("Input.dispatchKeyEvent"), event);
}

int Browser::keepScreenshot(const QString& name)
{
    const QJsonObject picture = command(QStringLiteral("Page.captureScreenshot"),
                                        {{QStringLiteral("format"), QStringLiteral("png")}});
    const QByteArray bytes = QByteArray::fromBase64(picture[QLatin1String("data")].toString().toLatin1());
    const QDir folder(QStringLiteral(VIGIL_SCREENSHOTS));
    folder.mkpath(QStringLiteral("."));
    QFile file(folder.filePath(name + QStringLiteral(".png")));
    return file.open(QIODevice::WriteOnly) ? static_cast<int>(file.write(bytes)) : 0;
}

QJsonObject Browser::command(const QString& method, const QJsonObject& parameters)
{
    QJsonObject message = {{QStringLiteral("id"), ++m_number},
                           {QStringLiteral("method"), method},
                           {QStringLiteral("params"), parameters}};
    if (!m_session.isEmpty())
        message[QStringLiteral("sessionId")] = m_session;
    m_process.write(QJsonDocument(message).toJson(QJsonDocument::Compact) + '\0');
    return receive(m_number);
}

/// Messages end with a zero byte. Events, and the answers to other commands, are skipped.
QJsonObject Browser::receive(int number)
{
    QJsonObject answer;
    const auto isAnswered = [&] {
        m_received += m_process.readAllStandardOutput();
        int end = 0;
        while ((end = m_received.indexOf('\0')) >= 0) {
            const QJsonObject message = QJsonDocument::fromJson(m_received.left(end)).object();
            m_received.remove(0, end + 1);
            if (message[QLatin1String("id")].toInt() != number)
                continue;
            answer = message[QLatin1String("result")].toObject();
            return true;
        }
        return m_process.state() == QProcess::NotRunning;
    };
    bool isDone = false;
    runUntil([&] { return isDone || (isDone = isAnswered()); });
    return answer;
}

} // namespace support
