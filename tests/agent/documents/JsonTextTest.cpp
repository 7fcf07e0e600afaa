// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <limits>

#include "agent/documents/JsonText.h"

namespace json = agent::json;

TEST(JsonText, EveryTextComesBackAsItWas)
{
    for (const std::string text :
         {"", "plain", "\"\\/", "\n\r\t\x01\x1f\x7f", "Länge €", "</script><b>&amp;"}) {
        const QJsonDocument document = QJsonDocument::fromJson('[' + json::quoted(text) + ']');
        EXPECT_EQ(document.array().at(0).toString().toStdString(), text);
    }
}

TEST(JsonText, HasNoCharacterWithAMeaningInHtml)
{
    EXPECT_EQ(json::quoted(std::string("<&>")), "\"\\u003c\\u0026\\u003e\"");
}

TEST(JsonText, ANumberIsFiniteOrNull)
{
    EXPECT_EQ(json::number("12.5"), "12.5");
    EXPECT_EQ(json::number("-3"), "-3");
    for (const char* text : {"", "nan", "inf", "-inf", "1e999", "12,5", "12 MB", "0x10"})
        EXPECT_EQ(json::number(std::string(text)), "null") << text;
    EXPECT_EQ(json::number(std::numeric_limits<double>::infinity()), "null");
}

TEST(JsonText, ATimeHasItsZone)
{
    EXPECT_EQ(json::time(QDateTime(QDate(2026, 1, 31), QTime(12, 34, 56), Qt::UTC)),
              "\"2026-01-31T12:34:56Z\"");
    EXPECT_EQ(json::time(QDateTime()), "null");
}
