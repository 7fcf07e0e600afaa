#include <gtest/gtest.h>

#include <vigil/Oid.h>

#include "types/OidOperators.h"

using vigil::Oid;

TEST(Oid, TheDefaultOneIsInvalidAndPrintsAsTheEmptyText)
{
    const Oid oid;
    EXPECT_FALSE(oid.isValid());
    EXPECT_EQ(oid.size(), 0);
    EXPECT_EQ(oid.toStdString(), "");
}
