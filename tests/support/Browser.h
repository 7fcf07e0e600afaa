// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_SUPPORT_BROWSER_H
#define VIGIL_SUPPORT_BROWSER_H

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QProcess>
#include <QString>
#include <QTemporaryDir>

namespace support {

/// A headless Chromium with one page, driven over its debugging pipe.
///
/// Failure: commands return empty values; log() has what the browser said.
class Browser
{
public:
    /// Where Chromium is; empty if it is not installed.
    static QString program();

    Browser() = default;
    ~Browser();

    bool start();

    /// Returns at once; wait with waitFor() for what the page shows.
    void open(const QString& url);

    /// The value of an expression on the page.
    QJsonValue evaluate(const QString& expression);

    /// Waits until the expression is true.
    bool waitFor(const QString& expression);

    void setSize(int width, int height);
    void setDark(bool isDark);
    void press(const QString& key);

    /// Keeps a picture of the page in the build's folder "screenshots". Returns its size in bytes.
    int keepScreenshot(const QString& name);

    QByteArray log() { return m_process.readAllStandardError(); }

private:
    QJsonObject command(const QString& method, const QJsonObject& parameters = {});
    QJsonObject receive(int number);

    const QTemporaryDir m_profile;
    QProcess m_process;
    QByteArray m_received;
    QString m_session;
    int m_number = 0;
};

} // namespace support

#endif
