#include "abi/StringConversion.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <vector>

#include "addin/WcharWrapper.h"

namespace {

class CountingMemory : public IMemoryManager {
public:
    bool AllocMemory(void** block, unsigned long size) override
    {
        if (fail)
            return false;
        *block = std::malloc(size);
        blocks.push_back(*block);
        return *block != nullptr;
    }
    void FreeMemory(void** block) override
    {
        std::free(*block);
        *block = nullptr;
    }
    ~CountingMemory() override
    {
        for (void* b : blocks)
            std::free(b);
    }
    bool fail = false;
    std::vector<void*> blocks;
};

tVariant variantOf(uint16_t vt) { tVariant v{}; v.vt = vt; return v; }

}  // namespace

TEST(Variant, LayoutMatchesHost)
{
    EXPECT_EQ(sizeof(tVariant), 64u);
    EXPECT_EQ(offsetof(tVariant, pwstrVal), 0u);
    EXPECT_EQ(offsetof(tVariant, lVal), 0u);
    EXPECT_EQ(offsetof(tVariant, wstrLen), 8u);
    EXPECT_EQ(offsetof(tVariant, vt), 60u);
}

TEST(ShortWchar, EmptyStringKeepsTerminator)
{
    unsigned short* out = nullptr;
    EXPECT_EQ(convToShortWchar(&out, L""), 1u);
    ASSERT_NE(out, nullptr);
    EXPECT_EQ(out[0], 0);
    delete[] out;

    CountingMemory memory;
    tVariant v = AllocAndConvertVariant(&memory, L"");
    EXPECT_EQ(v.vt, VTYPE_PWSTR);
    EXPECT_EQ(v.wstrLen, 0u);
    ASSERT_NE(v.pwstrVal, nullptr);
    EXPECT_EQ(v.pwstrVal[0], 0);
}

TEST(ShortWchar, HighCodePointLosesHighBits)
{
    unsigned short* out = nullptr;
    const wchar_t text[] = {static_cast<wchar_t>(0x1F600), L'a', 0};
    EXPECT_EQ(convToShortWchar(&out, text), 3u);
    EXPECT_EQ(out[0], 0xF600);
    EXPECT_EQ(out[1], 'a');
    EXPECT_EQ(out[2], 0);
    delete[] out;
}

TEST(ShortWchar, NullConvertsToEmpty)
{
    EXPECT_EQ(convFromShortWchar(nullptr, 5), L"");
    EXPECT_EQ(getLenShortWcharStr(nullptr), 0u);
    tVariant v = variantOf(VTYPE_PWSTR);
    v.wstrLen = 10;
    EXPECT_EQ(convFromShortWchar(v), L"");
}

TEST(ShortWchar, RoundTripAndCallerBuffer)
{
    const std::wstring text = L"\x041F\x0440\x0438 ok";
    unsigned short* narrow = nullptr;
    const unsigned int n = convToShortWchar(&narrow, text.c_str());
    EXPECT_EQ(getLenShortWcharStr(narrow), text.size());
    wchar_t* wide = nullptr;
    EXPECT_EQ(convFromShortWchar(&wide, narrow), n);
    EXPECT_EQ(std::wstring(wide), text);
    EXPECT_EQ(convFromShortWchar(narrow, static_cast<unsigned int>(text.size())), text);
    delete[] narrow;
    delete[] wide;

    // With an explicit length into the caller's buffer: the rest is zeroed.
    unsigned short buffer[8];
    for (auto& u : buffer) u = 0xFFFF;
    unsigned short* p = buffer;
    EXPECT_EQ(convToShortWchar(&p, L"abcdef", 8), 8u);  // longer than the text
    EXPECT_EQ(p, buffer);
    EXPECT_EQ(buffer[5], 'f');
    EXPECT_EQ(buffer[6], 0);
}

TEST(ShortWchar, AllocationFailureGivesNull)
{
    CountingMemory memory;
    memory.fail = true;
    unsigned int length = 77;
    EXPECT_EQ(AllocAndConvert(&memory, L"abc", &length), nullptr);
    EXPECT_EQ(length, 77u);
    tVariant v = AllocAndConvertVariant(&memory, L"abc");
    EXPECT_EQ(v.vt, VTYPE_PWSTR);
    EXPECT_EQ(v.pwstrVal, nullptr);
    EXPECT_EQ(AllocAndConvert(nullptr, L"abc"), nullptr);
}

TEST(ShortWchar, AllocAndConvertFillsLength)
{
    CountingMemory memory;
    unsigned int length = 0;
    unsigned short* s = AllocAndConvert(&memory, L"Open", &length);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(length, 4u);
    EXPECT_EQ(convFromShortWchar(s, length), L"Open");
    EXPECT_EQ(s[4], 0);
}

TEST(VariantToInt, TypeCodes)
{
    int out = 7;
    for (uint16_t vt : {2, 3, 10, 14}) {
        tVariant v = variantOf(vt);
        v.lVal = -5;
        EXPECT_TRUE(convVarToInt(v, out)) << vt;
        EXPECT_EQ(out, -5);
    }
    tVariant d = variantOf(VTYPE_R8);
    d.dblVal = -3.9;
    EXPECT_TRUE(convVarToInt(d, out));
    EXPECT_EQ(out, -3);
    d.dblVal = 1e300;  // no integer holds it: refused
    out = 7;
    EXPECT_FALSE(convVarToInt(d, out));
    EXPECT_EQ(out, 7);
    for (uint16_t vt : {0, 11, 15, 16, 17, 22, 99}) {
        tVariant v = variantOf(vt);
        v.lVal = 1;
        EXPECT_FALSE(convVarToInt(v, out)) << vt;
        EXPECT_EQ(out, 7);
    }
}

TEST(VariantToDword, TypeCodes)
{
    unsigned long out = 0;
    tVariant v = variantOf(VTYPE_I4);
    v.lVal = -1;
    EXPECT_TRUE(convVarToDWORD(v, out));
    EXPECT_EQ(out, static_cast<unsigned long>(-1L));
    v.vt = VTYPE_UI4;
    EXPECT_TRUE(convVarToDWORD(v, out));
    EXPECT_EQ(out, 0xFFFFFFFFul);
    v.vt = VTYPE_UI8;
    v.ullVal = 0x123456789ull;
    EXPECT_TRUE(convVarToDWORD(v, out));
    EXPECT_EQ(out, 0x123456789ul);
    v.vt = VTYPE_R8;
    v.dblVal = 9223372036854775808.0 * 1.5;
    EXPECT_TRUE(convVarToDWORD(v, out));
    EXPECT_EQ(out, 13835058055282163712ul);
    for (uint16_t vt : {0, 11, 19, 22}) {
        v.vt = vt;
        EXPECT_FALSE(convVarToDWORD(v, out)) << vt;
    }
}

TEST(WcharWrapperTest, BothDirections)
{
    WcharWrapper fromWide(L"\x041F" L"x");
    const unsigned short* n = fromWide;
    EXPECT_EQ(n[0], 0x41F);
    EXPECT_EQ(WcharWrapper::getStrLen(n), 2u);
    EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(fromWide)), L"\x041F" L"x");

    const unsigned short raw[] = {'h', 'i', 0};
    WcharWrapper fromShort(raw);
    EXPECT_EQ(std::wstring(static_cast<const wchar_t*>(fromShort)), L"hi");

    WcharWrapper none(static_cast<const wchar_t*>(nullptr));
    EXPECT_EQ(static_cast<const wchar_t*>(none), nullptr);
    EXPECT_EQ(static_cast<const unsigned short*>(none), nullptr);
}
