#include "util/CharsetConversion.h"

#include <gtest/gtest.h>

namespace {
// "Привет, мир" in UTF-8 and in Windows-1251.
const char kUtf8Hello[] = "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, \xD0\xBC\xD0\xB8\xD1\x80";
const char kCp1251Hello[] = "\xCF\xF0\xE8\xE2\xE5\xF2, \xEC\xE8\xF0";
const std::wstring kHello = L"\x041F\x0440\x0438\x0432\x0435\x0442, \x043C\x0438\x0440";
}  // namespace

TEST(MbsToWcs, EdgeCases)
{
    EXPECT_EQ(ConvertMbsToWcs("\xD0\x9F", L"UTF-8"), std::wstring(L"\x041F"));
    EXPECT_EQ(ConvertMbsToWcs("\xCF", L"Windows-1251"), std::wstring(L"\x041F"));
    EXPECT_EQ(ConvertMbsToWcs("\xCF", L"UTF-8"), L"");
    EXPECT_EQ(ConvertMbsToWcs("\xCF", L"KOI8-R"), L"");
    EXPECT_EQ(ConvertMbsToWcs("\xCF", L""), L"");
    EXPECT_EQ(ConvertMbsToWcs("", L"UTF-8"), L"");
}

TEST(MbsToWcs, RealText)
{
    EXPECT_EQ(ConvertMbsToWcs(kUtf8Hello, L"UTF-8"), kHello);
    EXPECT_EQ(ConvertMbsToWcs(kCp1251Hello, L"Windows-1251"), kHello);
    EXPECT_EQ(ConvertMbsToWcs(kCp1251Hello, L"UTF-8"), L"");
    EXPECT_EQ(ConvertMbsToWcs("MTIz", L"Windows-1251"), L"MTIz");
    // The encoding name is compared exactly.
    EXPECT_EQ(ConvertMbsToWcs(kCp1251Hello, L"windows-1251"), L"");
    // An embedded NUL ends the text.
    EXPECT_EQ(ConvertMbsToWcs(std::string("ab\0cd", 5), L"UTF-8"), L"ab");
    // Truncated multi-byte sequence: nothing at all.
    EXPECT_EQ(ConvertMbsToWcs("ab\xD0", L"UTF-8"), L"");
}

TEST(Utf8Guess, EdgeCases)
{
    EXPECT_TRUE(IsUTF8String("a\xD0\x9F"));
    EXPECT_TRUE(IsUTF8String("\xD0\x9F"));
    EXPECT_FALSE(IsUTF8String("\xD0"));
    EXPECT_FALSE(IsUTF8String("x\xCF\xC0"));
    EXPECT_FALSE(IsUTF8String(""));
    EXPECT_FALSE(IsUTF8String("plain ascii"));
    EXPECT_FALSE(IsUTF8String(nullptr));
}

TEST(Utf8Guess, RealText)
{
    EXPECT_TRUE(IsUTF8String(kUtf8Hello));
    EXPECT_FALSE(IsUTF8String(kCp1251Hello));
    EXPECT_EQ(ConvertUTF8Input(kUtf8Hello), kHello);
    EXPECT_EQ(ConvertUTF8Input(kCp1251Hello), kHello);
    EXPECT_EQ(ConvertUTF8Input("MTIz"), L"MTIz");
    EXPECT_EQ(ConvertUTF8Input(nullptr), L"");
}

TEST(NotAscii, TopBit)
{
    EXPECT_FALSE(NotASCII('\x7F'));
    EXPECT_TRUE(NotASCII('\x80'));
    EXPECT_TRUE(NotASCII('\xFF'));
    EXPECT_FALSE(NotASCII('A'));
}

TEST(UtfHelpers, RoundTripsAndSkips)
{
    EXPECT_EQ(str2wstr("\xC3\xA9"), std::wstring(L"\x00E9"));
    EXPECT_EQ(wstr2str(L"\x00E9"), "\xC3\xA9");
    EXPECT_EQ(str2wstr(kUtf8Hello), kHello);
    EXPECT_EQ(wstr2str(kHello), kUtf8Hello);
    EXPECT_EQ(wstr2str(std::wstring(L"\x1F600")), "\xF0\x9F\x98\x80");
    // Invalid input is dropped, not reported.
    EXPECT_EQ(str2wstr("a\xFF" "b"), L"ab");
    EXPECT_EQ(wstr2str(std::wstring{L'a', static_cast<wchar_t>(0xD800), L'b'}), "ab");
    EXPECT_EQ(wstr2str(std::wstring{L'a', static_cast<wchar_t>(0x110000), L'b'}), "ab");
}
