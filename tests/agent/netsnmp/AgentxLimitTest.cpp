// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include "agent/netsnmp/AgentxLimit.h"

using agent::AgentxLimit;

namespace {

class AgentxLimitTest : public testing::Test
{
protected:
    static constexpr char get = 5;
    static constexpr char testSet = 8;
    static constexpr char cleanupSet = 11;
    static constexpr char response = 18;

    /// Little-endian, of session 7, transaction 8 and packet 9 unless given.
    static QByteArray header(char command, int bodySize, char transaction = 8)
    {
        QByteArray bytes(20, '\0');
        bytes[0] = 1;
        bytes[1] = command;
        bytes[4] = 7;
        bytes[8] = transaction;
        bytes[12] = 9;
        for (int i = 0; i < 4; ++i)
            bytes[16 + i] = static_cast<char>(bodySize >> (8 * i));
        return bytes;
    }

    static QByteArray message(char command, int bodySize, char transaction = 8)
    {
        return header(command, bodySize, transaction) + QByteArray(bodySize, 'b');
    }

    static QByteArray answer(char error, char index, char transaction = 8)
    {
        QByteArray bytes = header(response, 8, transaction) + QByteArray(8, '\0');
        bytes[24] = error;
        bytes[26] = index;
        return bytes;
    }

    const int most = AgentxLimit::maxMessage - 20;
    const QByteArray tooBig = answer(SNMP_ERR_TOOBIG, 1);
    AgentxLimit limit;
};

} // namespace

TEST_F(AgentxLimitTest, PassesRequestsWithinTheLimit)
{
    const QByteArray bytes = message(get, 0) + message(get, 100) + message(testSet, most);
    EXPECT_EQ(limit.receive(bytes), bytes);
    EXPECT_EQ(limit.takeAnswers(), QByteArray());
}

TEST_F(AgentxLimitTest, AnswersALongerRequestItself)
{
    const QByteArray before = message(get, 4);
    const QByteArray after = message(get, 8);
    EXPECT_EQ(limit.receive(before + message(get, most + 1) + after), before + after);
    EXPECT_EQ(limit.takeAnswers(), tooBig);
    EXPECT_EQ(limit.takeAnswers(), QByteArray());
}

TEST_F(AgentxLimitTest, AnswersARequestWithAContextItself)
{
    constexpr char contextFollows = 8;
    QByteArray request = message(testSet, 40);
    request[2] = contextFollows;
    QByteArray unsupportedContext = answer(0, 1);
    unsupportedContext[24] = 6; // 262
    unsupportedContext[25] = 1;
    EXPECT_EQ(limit.receive(request + message(cleanupSet, 0) + message(get, 8)), message(get, 8));
    EXPECT_EQ(limit.takeAnswers(), unsupportedContext);
}

TEST_F(AgentxLimitTest, DropsEverythingFromTheFirstHeaderOfAnotherProtocol)
{
    const QByteArray before = message(get, 4);
    EXPECT_EQ(limit.receive(before + QByteArray(100, 'A') + before), before);
    EXPECT_TRUE(limit.isBroken());
    EXPECT_EQ(limit.receive(before), QByteArray());
    EXPECT_EQ(limit.takeAnswers(), QByteArray());
}

TEST_F(AgentxLimitTest, TakesBytesInPiecesOfAnySize)
{
    const QByteArray before = message(get, 30);
    const QByteArray after = message(get, 8);
    const QByteArray bytes = before + message(get, most + 5) + after;
    for (const int size : {1, 7, 19, 20, 21, 4096}) {
        QByteArray passed;
        for (int i = 0; i < bytes.size(); i += size) {
            const QByteArray piece = bytes.mid(i, size);
            const QByteArray accepted = limit.receive(piece);
            EXPECT_LE(accepted.size(), piece.size() + AgentxLimit::maxHeldBack);
            passed += accepted;
        }
        EXPECT_EQ(passed, before + after) << size;
        EXPECT_EQ(limit.takeAnswers(), tooBig) << size;
    }
}

TEST_F(AgentxLimitTest, TheEndOfARefusedSetDoesNotReachNetSnmp)
{
    const QByteArray other = message(cleanupSet, 0, 3);
    EXPECT_EQ(limit.receive(message(testSet, most + 1) + message(cleanupSet, 0) + other), other);
    EXPECT_EQ(limit.takeAnswers(), tooBig);
}

TEST_F(AgentxLimitTest, NeverAnswersAResponse)
{
    EXPECT_EQ(limit.receive(message(response, most + 1)), QByteArray());
    EXPECT_EQ(limit.takeAnswers(), QByteArray());
}

TEST_F(AgentxLimitTest, AnswersInTheByteOrderOfTheRequest)
{
    QByteArray request = message(get, 0x20000);
    request[2] = 0x10;
    std::reverse(request.begin() + 16, request.begin() + 20);
    EXPECT_EQ(limit.receive(request), QByteArray());
    const QByteArray answer = limit.takeAnswers();
    ASSERT_EQ(answer.size(), AgentxLimit::emptyAnswer);
    EXPECT_EQ(answer.mid(16), QByteArray("\0\0\0\x08\0\0\0\0\0\x01\0\x01", 12));
}

TEST_F(AgentxLimitTest, AnAnswerBeyondTheLimitBecomesTooBig)
{
    QByteArray longest = message(response, most);
    EXPECT_EQ(AgentxLimit::limited(longest), longest);
    QByteArray longer = message(response, most + 1);
    longer.replace(20, 8, QByteArray(8, '\0'));
    EXPECT_EQ(AgentxLimit::limited(longer), tooBig);
    longer[24] = SNMP_ERR_NOCREATION;
    longer[26] = 5;
    EXPECT_EQ(AgentxLimit::limited(longer), answer(SNMP_ERR_NOCREATION, 5)) << "keeps its own error";
}

TEST_F(AgentxLimitTest, KnowsTheLengthOfAVarbind)
{
    const oid shortened[] = {1, 3, 6, 1, 4, 1, 32473, 5};
    const oid full[] = {1, 3, 7};
    netsnmp_variable_list varbind = {};
    varbind.name = const_cast<oid*>(shortened);
    varbind.name_length = 8;
    varbind.type = ASN_INTEGER;
    EXPECT_EQ(AgentxLimit::sizeOf(varbind), 4u + 4 + 3 * 4 + 4);
    varbind.type = ASN_OCTET_STR;
    varbind.val_len = 5;
    EXPECT_EQ(AgentxLimit::sizeOf(varbind), 4u + 4 + 3 * 4 + 4 + 8);
    varbind.type = SNMP_NOSUCHINSTANCE;
    varbind.name = const_cast<oid*>(full);
    varbind.name_length = 3;
    EXPECT_EQ(AgentxLimit::sizeOf(varbind), 4u + 4 + 3 * 4);
}
