// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The agent builds a reply in pieces. Each piece is bounded, so a long reply does not delay SNMP requests.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <ctime>

#include "agent/core/Turn.h"
#include "agent/documents/ChecksJson.h"
#include "agent/documents/HistoryJson.h"
#include "agent/documents/OpenMetrics.h"
#include "support/Load.h"
#include "support/PublishedChecks.h"

using agent::TextPieces;
using agent::Turn;

namespace {

class LongReplies : public testing::Test
{
protected:
    struct Measure
    {
        int pieces = 0;
        int longest = 0;      ///< bytes
        qint64 longestUs = 0; ///< of processor time, to be printed
        qint64 longestTurnUs = 0;
        qint64 bytes = 0;
    };

    static qint64 processorUs()
    {
        timespec time = {};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64{1'000'000} * time.tv_sec + time.tv_nsec / 1000;
    }

    /// As a server makes the reply, turn by turn.
    static Measure measure(TextPieces& pieces)
    {
        Measure measure;
        bool isMore = true;
        while (isMore) {
            Turn turn;
            turn.start();
            const qint64 startUs = processorUs();
            while (isMore && !turn.isOver())
                isMore = addPiece(pieces, turn, measure);
            measure.longestTurnUs = std::max(measure.longestTurnUs, processorUs() - startUs);
        }
        return measure;
    }

    static bool addPiece(TextPieces& pieces, Turn& turn, Measure& measure)
    {
        QByteArray piece;
        const qint64 startUs = processorUs();
        const bool isMore = pieces.appendTo(piece);
        measure.longestUs = std::max(measure.longestUs, processorUs() - startUs);
        measure.longest = std::max(measure.longest, piece.size());
        measure.bytes += piece.size();
        ++measure.pieces;
        turn.count(piece.size());
        return isMore;
    }

    /// All replies, with the name of each.
    void expectBounded(int leastPieces)
    {
        agent::ChecksJson json({m_checks.list, m_checks.store, m_applications, m_checks.clock});
        agent::OpenMetrics metrics(m_checks.list, {}, agent::OpenMetrics::Format::OpenMetrics);
        agent::HistoryJson history(m_checks.list, m_history, 1);
        for (const auto& [name, pieces] : {std::pair<const char*, TextPieces*>("/api/checks", &json),
                                           {"/metrics", &metrics},
                                           {"/api/history", &history}}) {
            const Measure measured = measure(*pieces);
            EXPECT_LE(measured.longest, TextPieces::maxPiece) << name;
            if (pieces != &history) {
                EXPECT_GE(measured.pieces, leastPieces) << name;
            }
            std::printf("%s: %d pieces, %lld bytes, longest piece %d bytes, %lld us, longest turn %lld us\n",
                        name, measured.pieces, static_cast<long long>(measured.bytes), measured.longest,
                        static_cast<long long>(measured.longestUs),
                        static_cast<long long>(measured.longestTurnUs));
        }
    }

    support::PublishedChecks m_checks;
    agent::ApplicationServer m_applications{m_checks.cells, m_checks.clock, {}};
    agent::History m_history{m_checks.list, m_checks.clock,
                             [](agent::ApplicationId) { return agent::User(); }};
};

} // namespace

TEST_F(LongReplies, APieceIsBoundedForTheLongestTexts)
{
    for (const char octet : {'"', '\n', '\xff', 'x'}) {
        const std::string key(255, octet);
        const std::string text(65'535, octet);
        m_checks.publish({key, key}, 2, text);
        m_checks.publishMetric({key, key, key}, 2, text, text, text, text);
    }
    expectBounded(8);
}

TEST_F(LongReplies, APieceHasOneCheckOrMetricHoweverManyThereAre)
{
    const unsigned int checks = support::isFullLoad() ? 10'000 : 100;
    for (unsigned int check = 0; check < checks; ++check) {
        const std::string name = std::string(40, 'k') + std::to_string(check);
        m_checks.publish({"app", name}, 1, "a summary of an ordinary length");
        for (const char* metric : {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"})
            m_checks.publishMetric({"app", name, metric}, 0, "12345.678");
    }
    m_history.start();
    m_checks.clock.advance(100);
    expectBounded(static_cast<int>(11 * checks));
}
