#include <gtest/gtest.h>

#include "base/FrameHeader.h"

using base::FrameHeader;

TEST(FrameHeader, APayloadOfNoBytesGivesALengthOf26)
{
    quint64 length = 0;
    const QByteArray bytes = FrameHeader().toBytes(0);
    ASSERT_EQ(bytes.size(), 42);
    EXPECT_EQ(FrameHeader::readPrefix(bytes.left(16), length), FrameHeader::Prefix::Good);
    EXPECT_EQ(length, 26u);
}
