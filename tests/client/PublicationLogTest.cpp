// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "client/PublicationLog.h"

#include <gmock/gmock.h>

#include <QVariant>

#include <string>
#include <vector>

#include "support/PublicationText.h"

using support::publicationOf;
using support::withdrawalOfTree;
using testing::ElementsAreArray;

namespace {

std::vector<std::string> textsOf(const PublicationLog& log)
{
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < log.size(); ++i)
        texts.push_back(support::textOf(log.at(i)));
    return texts;
}

} // namespace

TEST(PublicationLog, ReturnsWhatItWasGivenInItsOrder)
{
    PublicationLog log;
    log.append(publicationOf("1.2", 5, true));
    log.append(publicationOf("1", QStringLiteral("text")));
    log.append(publicationOf("1.2", QVariant()));
    log.append(withdrawalOfTree("1"));
    log.append(publicationOf("", QStringLiteral("more text"), true));
    EXPECT_THAT(textsOf(log),
                ElementsAreArray({"1.2=5 notify", "1=text", "1.2 unset", "1 tree", "=more text notify"}));
}

TEST(PublicationLog, KeepsTheTypeOfAValue)
{
    PublicationLog log;
    log.append(publicationOf("1", -7));
    log.append(publicationOf("1", QStringLiteral("7")));
    log.append(publicationOf("1", QString()));
    log.append(publicationOf("1", QString(QChar(0xd800)))); // half of a character
    EXPECT_EQ(log.at(0).value, QVariant(-7));
    EXPECT_EQ(log.at(1).value, QVariant(QStringLiteral("7")));
    EXPECT_EQ(log.at(2).value, QVariant(QString()));
    EXPECT_TRUE(log.at(2).value.isValid()) << "an empty text is no withdrawal";
    EXPECT_EQ(log.at(3).value, QVariant(QString(QChar(0xd800))));
}

TEST(PublicationLog, CountsTheBytesOfArcsAndTexts)
{
    PublicationLog log;
    EXPECT_EQ(log.bytes(), 0u);
    log.append(publicationOf("1", 1));
    const std::size_t one = log.bytes();
    log.append(publicationOf("1.2.3", QString(1000, QLatin1Char('x'))));
    EXPECT_EQ(log.bytes(), 2 * one + 2 * sizeof(unsigned int) + 1000 * sizeof(QChar));
}
