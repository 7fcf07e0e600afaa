// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "ProcFiles.h"

using procfiles::Mount;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using testing::Optional;
using testing::SizeIs;

namespace {

Mount mountOf(const std::string& source, const std::string& mountPoint, const std::string& root = "/",
              const std::string& fileSystem = "ext4")
{
    return {"8:1", root, mountPoint, fileSystem, source};
}

auto at(const std::string& mountPoint)
{
    return Field(&Mount::mountPoint, mountPoint);
}

} // namespace

TEST(ProcLoad, IsTheFirstNumber)
{
    EXPECT_THAT(procfiles::parseLoad("2.35 1.74 0.79 5/106 14210\n"), Optional(2.35));
}

TEST(ProcLoad, OfTextWithoutANumberIsNothing)
{
    EXPECT_FALSE(procfiles::parseLoad(""));
    EXPECT_FALSE(procfiles::parseLoad("\n"));
    EXPECT_FALSE(procfiles::parseLoad("none"));
    EXPECT_FALSE(procfiles::parseLoad("-1"));
}

TEST(ProcUptime, IsInSeconds)
{
    EXPECT_THAT(procfiles::parseUptimeSeconds("3600.50 7000.00\n"), Optional(3600.5));
}

TEST(ProcMemory, AvailableMemoryDoesNotCountAsUsed)
{
    const auto use = procfiles::parseMemory("MemTotal:       1000 kB\n"
                                            "MemFree:         100 kB\n"
                                            "MemAvailable:    750 kB\n"
                                            "SwapTotal:       200 kB\n"
                                            "SwapFree:        150 kB\n");
    ASSERT_TRUE(use);
    EXPECT_THAT(use->memoryPercent, DoubleNear(25.0, 1e-9));
    EXPECT_THAT(use->swapPercent, DoubleNear(25.0, 1e-9));
}

TEST(ProcMemory, WithoutSwapSpaceItsUseIsZero)
{
    const auto use =
        procfiles::parseMemory("MemTotal: 10 kB\nMemAvailable: 5 kB\nSwapTotal: 0 kB\nSwapFree: 0 kB\n");
    ASSERT_TRUE(use);
    EXPECT_EQ(use->swapPercent, 0.0);
}

TEST(ProcMemory, WithoutTheTotalOrTheAvailableAmountIsNothing)
{
    EXPECT_FALSE(procfiles::parseMemory(""));
    EXPECT_FALSE(procfiles::parseMemory("MemTotal: 10 kB\n"));
    EXPECT_FALSE(procfiles::parseMemory("MemAvailable: 10 kB\n"));
    EXPECT_FALSE(procfiles::parseMemory("MemTotal: 0 kB\nMemAvailable: 0 kB\n"));
}

TEST(ProcMemory, MalformedLinesAreSkipped)
{
    EXPECT_TRUE(procfiles::parseMemory("no colon\n:\nMemTotal: much\nMemTotal: 10 kB\n\nMemAvailable: 5 kB"));
}

TEST(ProcMounts, FieldsAreFoundAfterAnyNumberOfOptionalOnes)
{
    const auto mounts = procfiles::parseMounts(
        "36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 shared:2 - ext3 /dev/root rw,errors=continue\n"
        "27 1 254:0 / / rw,relatime - ext4 /dev/vda rw,discard\n");
    ASSERT_THAT(mounts, SizeIs(2));
    EXPECT_EQ(mounts[0].device, "98:0");
    EXPECT_EQ(mounts[0].root, "/mnt1");
    EXPECT_EQ(mounts[0].mountPoint, "/mnt2");
    EXPECT_EQ(mounts[0].fileSystem, "ext3");
    EXPECT_EQ(mounts[0].source, "/dev/root");
    EXPECT_EQ(mounts[1].source, "/dev/vda");
}

TEST(ProcMounts, OctalEscapesInNamesAreDecoded)
{
    const auto mounts =
        procfiles::parseMounts(R"(36 35 8:1 / /media/My\040Disk\134\011\012 rw - ext4 /dev/disk\040one rw)");
    ASSERT_THAT(mounts, SizeIs(1));
    EXPECT_EQ(mounts[0].mountPoint, "/media/My Disk\\\t\n");
    EXPECT_EQ(mounts[0].source, "/dev/disk one");
}

TEST(ProcMounts, ABackslashWithoutAnEscapeStays)
{
    const auto mounts = procfiles::parseMounts(R"(36 35 8:1 / /a\04 rw - ext4 /dev/b\089\ rw)");
    ASSERT_THAT(mounts, SizeIs(1));
    EXPECT_EQ(mounts[0].mountPoint, R"(/a\04)");
    EXPECT_EQ(mounts[0].source, R"(/dev/b\089\)");
}

TEST(ProcMounts, MalformedLinesAreSkipped)
{
    EXPECT_THAT(procfiles::parseMounts(""), IsEmpty());
    EXPECT_THAT(procfiles::parseMounts("\n36 35 98:0\n"), IsEmpty());
    EXPECT_THAT(procfiles::parseMounts("36 35 98:0 / /mnt rw ext4 /dev/sda rw\n"), IsEmpty());
    EXPECT_THAT(procfiles::parseMounts("36 35 98:0 / /mnt rw - ext4\n"), IsEmpty());
    EXPECT_THAT(procfiles::parseMounts("36 35 98:0 / /mnt rw -"), IsEmpty());
}

TEST(ProcDisks, OnlyFileSystemsOnDevicesAreDisks)
{
    const std::vector<Mount> mounts = {mountOf("proc", "/proc", "/", "proc"), mountOf("/dev/sda1", "/"),
                                       mountOf("server:/home", "/home", "/", "nfs4"),
                                       mountOf("/dev/loop1", "/snap/core", "/", "squashfs")};
    EXPECT_THAT(procfiles::selectDisks(mounts), ElementsAre(at("/")));
}

TEST(ProcDisks, ADeviceMountedTwiceCountsOnceAtItsShorterMountPoint)
{
    const std::vector<Mount> mounts = {mountOf("/dev/sda1", "/mnt/second"), mountOf("/dev/sda1", "/data"),
                                       mountOf("/dev/sda1", "/data/third")};
    EXPECT_THAT(procfiles::selectDisks(mounts), ElementsAre(at("/data")));
}

TEST(ProcDisks, AWholeDeviceIsPreferredToAFolderWithAShorterMountPoint)
{
    const std::vector<Mount> mounts = {mountOf("/dev/sda1", "/a", "/folder"), mountOf("/dev/sda1", "/data")};
    EXPECT_THAT(procfiles::selectDisks(mounts), ElementsAre(at("/data")));
}

TEST(ProcDisks, WithoutAnyDiskTheRootIsUsed)
{
    const std::vector<Mount> mounts = {mountOf("overlay", "/", "/", "overlay"),
                                       mountOf("proc", "/proc", "/", "proc")};
    EXPECT_THAT(procfiles::selectDisks(mounts), ElementsAre(at("/")));
}

TEST(ProcProcesses, AreTheEntriesWithNumbersAsNames)
{
    EXPECT_TRUE(procfiles::isProcessName("1"));
    EXPECT_TRUE(procfiles::isProcessName("14210"));
    EXPECT_FALSE(procfiles::isProcessName(""));
    EXPECT_FALSE(procfiles::isProcessName("self"));
    EXPECT_FALSE(procfiles::isProcessName("12a"));
}
