#include "util/TextUtil.h"
#include "util/SymbolCodecs.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

#include "TestUtil.h"

TEST(SymbolNames, ControlTableAndOthers)
{
    EXPECT_EQ(GetSymbolName(0), L"NUL");
    EXPECT_EQ(GetSymbolName(9), L"TAB");
    EXPECT_EQ(GetSymbolName(13), L"CR");
    EXPECT_EQ(GetSymbolName(29), L"GS");
    EXPECT_EQ(GetSymbolName(32), L"SPACE");
    EXPECT_EQ(GetSymbolName(127), L"DEL");
    EXPECT_EQ(GetSymbolName(33), L"");
    EXPECT_EQ(GetSymbolName(126), L"");
    EXPECT_EQ(GetSymbolName(static_cast<wchar_t>(-1)), L"");
}

TEST(SymbolNames, DisplayAndNumberForms)
{
    EXPECT_EQ(FormatSymbolForDisplay(13), L" 'CR' ");
    EXPECT_EQ(FormatSymbolForDisplay(L'A'), L"A");
    EXPECT_EQ(FormatSymbolForDisplay(0x41F), std::wstring(1, 0x41F));
    EXPECT_EQ(FormatSymbolAsNumber(65), L"65");
    EXPECT_EQ(FormatSymbolAsNumber(0), L"0");
    EXPECT_EQ(FormatSymbolAsNumber(static_cast<wchar_t>(-1)), L"4294967295");
}

TEST(TrimXml, BlanksMarkupControlsAndHighBytes)
{
    std::string s = "x&y<z>";
    EXPECT_TRUE(TrimXMLIllegalChars(s));
    EXPECT_EQ(s, "x y z ");
    std::string quotes = "a\"b'c";
    EXPECT_TRUE(TrimXMLIllegalChars(quotes));
    EXPECT_EQ(quotes, "a b c");
    std::string cyr = "\xD0\x9F" "x";
    EXPECT_TRUE(TrimXMLIllegalChars(cyr));
    EXPECT_EQ(cyr, "  x");
    std::string controls("a\x01" "b\x1B" "c\td\ne\rf\x7Fg\0h", 15);
    EXPECT_TRUE(TrimXMLIllegalChars(controls));
    EXPECT_EQ(controls, "a b c d e f g h");
    std::string empty;
    EXPECT_TRUE(TrimXMLIllegalChars(empty));
    EXPECT_EQ(empty, "");
}

TEST(Hrs, WorkedExamples)
{
    EXPECT_EQ(raw2HRS(std::string("ABC")), "ABC");
    EXPECT_EQ(raw2HRS(std::string("12\r\n")), "12(013010)");
    EXPECT_EQ(raw2HRS(std::string("A BC")), "A(032)BC");
    EXPECT_EQ(raw2HRS(std::string("A B")), "A(032)");
    EXPECT_EQ(raw2HRS(std::string(1, '\0')), "(000)");
    EXPECT_EQ(raw2HRS(std::string(1, '\xFF')), "(255)");
    EXPECT_EQ(raw2HRS(std::string("\x1D" "A")), "(029)");
    EXPECT_EQ(raw2HRS(std::string("\x1D" "AB")), "(029)AB");
    EXPECT_EQ(raw2HRS(std::string("\x09")), "(009)");
    EXPECT_EQ(raw2HRS("abc", 0), "");
    EXPECT_EQ(raw2HRS("abc", -3), "");
}

TEST(Hrs, WideFormGoesThroughUtf8)
{
    // A Cyrillic letter is one group of its two UTF-8 byte values.
    EXPECT_EQ(raw2HRS(std::wstring(L"A\x041F" L"BC")), L"A(208159)BC");
    EXPECT_EQ(raw2HRS(L"ABC", 2), L"AB");
    EXPECT_EQ(raw2HRS(static_cast<const wchar_t*>(nullptr), 2), L"");
}

TEST(Hrs, ParserKeepsItsQuirks)
{
    EXPECT_EQ(hrs2Raw(L""), L"");
    EXPECT_EQ(hrs2Raw(L"ABC"), L"ABC");
    EXPECT_EQ(hrs2Raw(L"x(065"), L"xA");
    EXPECT_EQ(hrs2Raw(L"(065)"), L"");  // every closed group is rejected
    EXPECT_EQ(hrs2Raw(L"(06"), L"");
    EXPECT_EQ(hrs2Raw(L"a)"), L"");
    EXPECT_EQ(hrs2Raw(L"((065"), L"");
    EXPECT_EQ(hrs2Raw(L"(06x"), L"");
    EXPECT_EQ(hrs2Raw(L"(065066"), L"AB");

    wchar_t buf[4] = {};
    EXPECT_EQ(hrs2Raw(buf, L"ABCDEF", 3), 3);
    EXPECT_EQ(std::wstring(buf, 3), L"ABC");
    EXPECT_EQ(hrs2Raw(buf, L"", 3), 0);
    EXPECT_EQ(hrs2Raw(buf, L"AB", 0), 0);
}

TEST(Printable, KeepsGraphicOnly)
{
    std::wstring s = L"a b\tc\x1D" L"d";
    EXPECT_EQ(raw2Printable(s), L"abcd");
    EXPECT_EQ(raw2Printable(L"abc", 0), L"");
}

TEST(Base64, KnownValues)
{
    EXPECT_EQ(base64_encode("M"), "TQ==");
    EXPECT_EQ(base64_encode("Ma"), "TWE=");
    EXPECT_EQ(base64_encode("Man"), "TWFu");
    EXPECT_EQ(base64_encode(""), "");
    EXPECT_EQ(base64_decode("TWFu\nTWFu"), "Man");
    EXPECT_EQ(base64_decode("TQ=="), "M");
    EXPECT_EQ(base64_decode("TWE"), "Ma");
    EXPECT_EQ(base64_decode("TWFuT"), "Man");  // a single leftover character is dropped
    EXPECT_EQ(base64_decode("TW!Fu"), "M");
    EXPECT_EQ(raw2Base64(std::string("123")), "MTIz");
    EXPECT_EQ(base642Raw(std::string("MTIz")), "123");
}

TEST(Base64, WideFormsThroughUtf8)
{
    EXPECT_EQ(raw2Base64(std::wstring(L"\x041F")), L"0J8=");
    EXPECT_EQ(base642Raw(std::wstring(L"0J8=")), std::wstring(L"\x041F"));
}

TEST(Base64, RoundTripAgreesWithCoreutils)
{
    std::mt19937 rng(12345);
    for (size_t len = 0; len <= 300; ++len) {
        std::string bytes(len, '\0');
        for (char& c : bytes)
            c = static_cast<char>(rng() & 0xFF);
        const std::string encoded = base64_encode(bytes);
        ASSERT_EQ(base64_decode(encoded), bytes) << "length " << len;
        if (len % 7 == 0 || len < 8) {
            // coreutils wraps at 76 columns unless told not to.
            ASSERT_EQ(encoded, runWithInput("base64 -w0", bytes)) << "length " << len;
        }
    }
}

TEST(Strings, TrimReplaceLower)
{
    std::string s = " \t a b \r\n";
    trim(s);
    EXPECT_EQ(s, "a b");
    EXPECT_EQ(trimed(std::string("   ")), "");
    EXPECT_EQ(trimed(std::wstring(L"\n x y\v")), L"x y");
    EXPECT_EQ(replace(std::string("aaa"), "aa", "b"), "ba");
    EXPECT_EQ(replace(std::string("abc"), "", "x"), "abc");
    EXPECT_EQ(replace(std::string(""), "a", "x"), "");
    EXPECT_EQ(replace(std::wstring(L"a-b-c"), L"-", L"--"), L"a--b--c");
    EXPECT_EQ(str_tolower(std::string("RuS-ru")), "rus-ru");
    EXPECT_EQ(str_tolower(std::wstring(L"EN_US")), L"en_us");
}
