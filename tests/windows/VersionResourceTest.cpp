// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The details Windows shows about the library's file.

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <vector>

#include "base/BuildInfo.h"

class VersionResource : public testing::Test
{
protected:
    void SetUp() override
    {
        m_block.resize(GetFileVersionInfoSizeA(LIBRARY_PATH, nullptr));
        ASSERT_FALSE(m_block.empty()) << "error " << GetLastError();
        const auto size = static_cast<DWORD>(m_block.size());
        ASSERT_TRUE(GetFileVersionInfoA(LIBRARY_PATH, 0, size, m_block.data()));
    }

    template <typename Value>
    const Value* find(const std::string& path) const
    {
        void* value = nullptr;
        UINT size = 0;
        return VerQueryValueA(m_block.data(), path.c_str(), &value, &size) ? static_cast<Value*>(value)
                                                                           : nullptr;
    }

    std::string text(const std::string& name) const
    {
        const char* value = find<char>("\\StringFileInfo\\040904B0\\" + name);
        return value ? value : "(none)";
    }

private:
    std::vector<char> m_block;
};

TEST_F(VersionResource, HasTheVersionAsANumber)
{
    const auto* info = find<VS_FIXEDFILEINFO>("\\");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->dwFileVersionMS, 0x00010000u);
    EXPECT_EQ(info->dwFileVersionLS, 0u);
    EXPECT_EQ(info->dwFileType, static_cast<DWORD>(VFT_DLL));
}

TEST_F(VersionResource, HasTheSameVersionAsTheLog)
{
    EXPECT_EQ(text("FileVersion"), base::buildInfo::version());
    EXPECT_EQ(text("ProductVersion"), "1.0.0");
}

TEST_F(VersionResource, NamesTheFile)
{
    EXPECT_EQ(text("OriginalFilename"), "vigil.dll");
    EXPECT_EQ(text("FileDescription"), "Application health for SNMP management");
}
