// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include "agent/notifications/Notification.h"

using agent::CellValue;
using agent::HealthChange;
using agent::Notification;
using agent::ObjectId;

namespace {

std::string textOf(const Notification& notification, size_t index)
{
    return std::get<std::string>(notification.objects.at(index).second);
}

} // namespace

TEST(Notification, OfHealthHasTheRowsCellsAndThePreviousStatus)
{
    const Notification notification = Notification::ofHealth({{1, 65, 1, 66}, 2, 0, "full"});
    EXPECT_EQ(notification.type, (ObjectId{1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4, 0, 1}));
    ASSERT_EQ(notification.objects.size(), 6u);
    EXPECT_EQ(notification.objects[0].first,
              (ObjectId{1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4, 1, 1, 3, 1, 65, 1, 66}));
    EXPECT_EQ(notification.objects[0].second, CellValue(2));
    EXPECT_EQ(notification.objects[1].first, (ObjectId{1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4, 6, 1, 0}));
    EXPECT_EQ(notification.objects[1].second, CellValue(0));
    EXPECT_EQ(notification.objects[2].first,
              (ObjectId{1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4, 1, 1, 4, 1, 65, 1, 66}));
    EXPECT_EQ(notification.objects[2].second, CellValue(std::string("full")));
}

TEST(Notification, OfHealthHasTheKeysAndTheSeverity)
{
    const ObjectId objects{1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4, 6};
    const Notification notification = Notification::ofHealth({{2, 65, 0xffff'ffffU, 1, 66}, 2, 0, "full"});
    EXPECT_EQ(notification.objects[3].first, agent::below(objects, {2, 0}));
    EXPECT_EQ(textOf(notification, 3), "A\uFFFD");
    EXPECT_EQ(notification.objects[4].first, agent::below(objects, {3, 0}));
    EXPECT_EQ(textOf(notification, 4), "B");
    EXPECT_EQ(notification.objects[5].first, agent::below(objects, {4, 0}));
    EXPECT_EQ(notification.objects[5].second, CellValue(3));
    EXPECT_EQ(Notification::ofHealth({{1, 65}, 3, 0, ""}).objects[5].second, CellValue(1));
    EXPECT_EQ(textOf(Notification::ofHealth({{1, 65}, 3, 0, ""}), 4), "");
}

TEST(Notification, OfValueHasTheCellAlone)
{
    const Notification notification = Notification::ofValue({1, 3, 6, 1, 4, 1, 32473, 5}, 42);
    EXPECT_EQ(notification.type, (ObjectId{1, 3, 6, 1, 4, 1, 32473, 127, 3, 1, 200, 4, 0, 2}));
    ASSERT_EQ(notification.objects.size(), 1u);
    EXPECT_EQ(notification.objects[0].first, (ObjectId{1, 3, 6, 1, 4, 1, 32473, 5}));
    EXPECT_EQ(notification.objects[0].second, CellValue(42));
}

TEST(Notification, TextsAreCutAt1024OctetsBetweenCharacters)
{
    const std::string longest(1024, 'x');
    EXPECT_EQ(textOf(Notification::ofHealth({{1}, 2, 0, longest}), 2), longest);
    EXPECT_EQ(textOf(Notification::ofHealth({{1}, 2, 0, longest + "y"}), 2), longest);
    const std::string umlauts = std::string(1023, 'x') + "\xc3\xa4";
    EXPECT_EQ(textOf(Notification::ofValue({1}, umlauts), 0), std::string(1023, 'x'));
    EXPECT_EQ(textOf(Notification::ofValue({1}, std::string(2000, '\x80')), 0), std::string(1024, '\x80'));
}
