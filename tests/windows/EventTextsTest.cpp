// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// The texts that Windows' event viewer finds in the agent's program.

#include <gtest/gtest.h>

#include <windows.h>

#include <string>

namespace {

std::string textOf(DWORD message, const char* line)
{
    HMODULE program = LoadLibraryExA(AGENT_PATH, nullptr, LOAD_LIBRARY_AS_DATAFILE);
    char text[100] = {};
    const DWORD_PTR places[] = {reinterpret_cast<DWORD_PTR>(line)};
    FormatMessageA(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, program, message, 0, text,
                   sizeof text, reinterpret_cast<va_list*>(const_cast<DWORD_PTR*>(places)));
    FreeLibrary(program);
    return text;
}

} // namespace

TEST(EventTexts, AreTheLinesOfTheLog)
{
    constexpr DWORD information = 0x40000001;
    constexpr DWORD warning = 0x80000002;
    constexpr DWORD error = 0xC0000003;
    for (const DWORD message : {information, warning, error})
        EXPECT_EQ(textOf(message, "a line of the log"), "a line of the log\r\n") << message;
}
