// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QJsonDocument>

#include "vigilctl/StatusReport.h"

using vigilctl::StatusReport;

namespace {

StatusReport reportOf(const QByteArray& json)
{
    return StatusReport(QJsonDocument::fromJson(json).object());
}

const QByteArray twoProblems =
    R"({"version": 1, "host": "shop1", "time": "2026-01-31T12:00:00Z", "status": "critical",
    "counts": {"ok": 1, "unknown": 0, "warning": 1, "critical": 1},
    "checks": [
      {"name": "shop/db", "status": "ok", "severity": 0, "summary": "fine", "since": "2026-01-31T11:00:00Z"},
      {"name": "shop/queue", "status": "warning", "severity": 2, "summary": "long", "since": "2026-01-31T11:59:30Z"},
      {"name": "shop/web", "status": "critical", "severity": 3, "summary": "no answer", "since": "2026-01-31T09:30:00Z"}],
    "applications": [{"number": 1, "program": "web", "state": "connected"},
                     {"number": 2, "program": "", "address": "127.0.0.1:40112", "state": "lost"}]})";

} // namespace

TEST(StatusReport, NamesProblemsTheWorstFirst)
{
    EXPECT_EQ(reportOf(twoProblems).text(false).toStdString(),
              "CRITICAL - shop1: 1 critical, 1 warning, 0 unknown, 1 ok\n"
              "CRITICAL  shop/web, for 2 h: no answer\n"
              "WARNING  shop/queue, for 30 s: long\n"
              "application 2 (127.0.0.1:40112) is lost\n");
}

TEST(StatusReport, ColoursTheStatusAlone)
{
    const QString text = reportOf(twoProblems).text(true);
    EXPECT_TRUE(text.startsWith(QStringLiteral("\033[1;31mCRITICAL\033[0m - shop1"))) << qPrintable(text);
    EXPECT_EQ(text.count(QLatin1Char('\033')), 6);
}

TEST(StatusReport, HasTheExitCodesOfAPlugin)
{
    const auto codeFor = [](const QByteArray& status) {
        return reportOf("{\"version\": 1, \"checks\": [], \"status\": \"" + status + "\"}").exitCode();
    };
    EXPECT_EQ(codeFor("ok"), 0);
    EXPECT_EQ(codeFor("warning"), 1);
    EXPECT_EQ(codeFor("critical"), 2);
    EXPECT_EQ(codeFor("unknown"), 3);
    EXPECT_EQ(codeFor("new"), 3);
}

TEST(StatusReport, AnotherDocumentIsUnknown)
{
    for (const char* document : {"", "[]", "{}", "{\"version\": 2, \"checks\": []}", "{\"version\": 1}"}) {
        EXPECT_FALSE(reportOf(document).isValid()) << document;
        EXPECT_EQ(reportOf(document).exitCode(), StatusReport::Unknown) << document;
    }
}

TEST(StatusReport, AHostileSummaryCannotControlTheTerminal)
{
    const QString text =
        reportOf(R"({"version": 1, "host": "a\u001b]0;title\u0007", "status": "critical", "checks": [
        {"name": "\u001b[2J\u202e", "status": "critical", "summary": "x\nOK - all is well\u009b1m"}]})")
            .text(false);
    for (const QChar character : text) {
        EXPECT_TRUE(character == QLatin1Char('\n') || (character.category() != QChar::Other_Control &&
                                                       character.category() != QChar::Other_Format));
    }
    EXPECT_EQ(text.count(QLatin1Char('\n')), 2);
}
