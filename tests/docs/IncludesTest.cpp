// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The arrows between folders, as in docs/architecture.md: a source may include headers of the same room and
// of the rooms listed for it.

#include <gtest/gtest.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include "support/QtPrinters.h"

namespace {

struct Room
{
    const char* path; ///< of all files that begin with it; the longest match counts
    const char* arrows;
};

// clang-format off
constexpr Room rooms[] = {
    {"src/base/BuildInfo",  ""},
    {"src/base/wire/",      ""},
    {"src/types/",          ""},
    {"src/testing/",        ""},
    {"src/platform/peer/",  ""},
    {"src/platform/",       ""},
    {"src/base/",           "src/base/BuildInfo src/base/wire/ src/platform/"},
    {"src/client/",         "src/base/BuildInfo src/base/ src/base/wire/ src/types/ src/platform/ src/platform/peer/"},
    {"src/snmp/",           "src/client/ src/base/ src/base/wire/ src/types/ src/platform/"},
    {"src/c/",              "src/health/ src/client/ src/base/ src/platform/"},
    {"src/health/",         "src/snmp/ src/client/ src/base/ src/types/ src/platform/"},

    {"agent/core/",         "src/base/wire/ src/platform/peer/"},
    {"agent/netsnmp/",      "agent/core/"},
    {"agent/documents/",    "agent/checks/ agent/applications/ agent/cells/ agent/core/ src/base/BuildInfo"},
    {"agent/http/",         "agent/documents/ agent/core/"},
    {"agent/control/",      "agent/documents/ agent/checks/ agent/cells/ agent/core/"},
    {"agent/cells/",        "agent/core/"},
    {"agent/checks/",       "agent/cells/ agent/core/"},
    {"agent/notifications/","agent/checks/ agent/cells/ agent/netsnmp/ agent/core/"},
    {"agent/applications/", "agent/cells/ agent/core/ src/base/wire/"},
    {"agent/show/",         "agent/checks/ agent/netsnmp/ agent/core/"},
    {"agent/process/",      "agent/applications/ agent/core/ src/base/wire/ src/base/BuildInfo"},
    {"agent/serving/",      "agent/checks/ agent/notifications/ agent/applications/ agent/cells/ agent/netsnmp/ "
                            "agent/core/ "
                            "src/base/wire/ src/base/BuildInfo"},
    {"agent/",              "agent/http/ agent/control/ agent/documents/ agent/serving/ agent/show/ agent/checks/ "
                            "agent/notifications/ agent/process/ agent/applications/ agent/cells/ agent/netsnmp/ "
                            "agent/core/ src/base/wire/ src/base/BuildInfo"},
};
// clang-format on

/// The facade creates the table manager, in its source file alone.
const QString exception = QStringLiteral("src/client/VigilSnmp.cpp includes snmp/SnmpTableManager.h");

const Room* roomOf(const QString& path)
{
    const Room* found = nullptr;
    for (const Room& room : rooms) {
        if (path.startsWith(QLatin1String(room.path)) &&
            (!found || qstrlen(room.path) > qstrlen(found->path)))
            found = &room;
    }
    return found;
}

/// The path of a header, from the root of the sources.
QString resolved(const QString& file, const QString& header)
{
    if (!header.contains(QLatin1Char('/')))
        return QFileInfo(file).path() + QLatin1Char('/') + header;
    return header.startsWith(QLatin1String("agent/")) ? header : QLatin1String("src/") + header;
}

/// Empty if file may include header.
QString violation(const QString& file, int line, const QString& header)
{
    const Room* from = roomOf(file);
    const Room* to = roomOf(resolved(file, header));
    if (!from || !to)
        return QStringLiteral("%1:%2: \"%3\" leads to no room of the table").arg(file).arg(line).arg(header);
    const QStringList arrows = QString::fromLatin1(from->arrows).split(QLatin1Char(' '));
    if (from == to || arrows.contains(QLatin1String(to->path)) ||
        QStringLiteral("%1 includes %2").arg(file, header) == exception)
        return QString();
    return QStringLiteral("%1:%2: \"%3\" makes a forbidden arrow: %4 -> %5")
        .arg(file)
        .arg(line)
        .arg(header, QLatin1String(from->path), QLatin1String(to->path));
}

QStringList sourcesIn(const QStringList& folders)
{
    const QDir root(QStringLiteral(VIGIL_SOURCE_DIR));
    QStringList files;
    for (const QString& folder : folders) {
        QDirIterator it(root.filePath(folder), {QStringLiteral("*.h"), QStringLiteral("*.cpp")}, QDir::Files,
                        QDirIterator::Subdirectories);
        while (it.hasNext())
            files += root.relativeFilePath(it.next());
    }
    files.sort();
    return files;
}

QStringList linesOf(const QString& file)
{
    QFile source(QDir(QStringLiteral(VIGIL_SOURCE_DIR)).filePath(file));
    EXPECT_TRUE(source.open(QIODevice::ReadOnly)) << qPrintable(file);
    return QString::fromUtf8(source.readAll()).split(QLatin1Char('\n'));
}

} // namespace

TEST(Includes, FollowTheArrowsBetweenRooms)
{
    static const QRegularExpression include(QStringLiteral("^#include \"([^\"]+)\""));
    QStringList violations;
    int checked = 0;
    for (const QString& file : sourcesIn({QStringLiteral("src"), QStringLiteral("agent")})) {
        int number = 0;
        for (const QString& line : linesOf(file)) {
            ++number;
            const QRegularExpressionMatch match = include.match(line);
            if (!match.hasMatch())
                continue;
            ++checked;
            violations += violation(file, number, match.captured(1));
        }
    }
    violations.removeAll(QString());
    EXPECT_GT(checked, 100);
    EXPECT_TRUE(violations.isEmpty()) << qPrintable(violations.join(QLatin1Char('\n')));
}

TEST(Includes, AForbiddenArrowIsNamedWithItsPlace)
{
    EXPECT_EQ(violation(QStringLiteral("src/base/Logging.h"), 7, QStringLiteral("client/Client.h")),
              QStringLiteral("src/base/Logging.h:7: \"client/Client.h\" makes a forbidden arrow: "
                             "src/base/ -> src/client/"));
    EXPECT_EQ(violation(QStringLiteral("agent/core/Log.h"), 9, QStringLiteral("agent/cells/Cell.h")),
              QStringLiteral("agent/core/Log.h:9: \"agent/cells/Cell.h\" makes a forbidden arrow: "
                             "agent/core/ -> agent/cells/"));
    EXPECT_EQ(violation(QStringLiteral("src/base/Logging.h"), 7, QStringLiteral("elsewhere/File.h")),
              QStringLiteral("src/base/Logging.h:7: \"elsewhere/File.h\" leads to no room of the table"));
}

TEST(Includes, TheFacadesExceptionIsForItsSourceFileAlone)
{
    const QString manager = QStringLiteral("snmp/SnmpTableManager.h");
    EXPECT_EQ(violation(QStringLiteral("src/client/VigilSnmp.cpp"), 1, manager), QString());
    EXPECT_NE(violation(QStringLiteral("src/client/VigilSnmp.h"), 1, manager), QString());
}

// The enumerator converts to an integer, so the call binds port 2 of every address.
TEST(Sources, NoSocketIsBoundToAnEnumeratorInPlaceOfAnAddress)
{
    static const QRegularExpression mistake(QStringLiteral("\\bbind\\(QHostAddress::\\w+\\)"));
    const QStringList folders = {QStringLiteral("src"), QStringLiteral("agent"), QStringLiteral("examples"),
                                 QStringLiteral("tests")};
    for (const QString& file : sourcesIn(folders)) {
        int number = 0;
        for (const QString& line : linesOf(file)) {
            ++number;
            const bool isComment = line.contains(QLatin1String("///"));
            EXPECT_FALSE(!isComment && mistake.match(line).hasMatch()) << qPrintable(file) << ':' << number;
        }
    }
}
