#include <Orlix/foundation/CString.h>

#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/memory/CMemory.h>

#include "support/HeapUse.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <random>
#include <string>
#include <type_traits>
#include <utility>

using namespace Orlix;

namespace {

static_assert(!std::is_constructible_v<CString, const char*> && !std::is_constructible_v<CString, const char (&)[4]>,
              "a narrow literal must not become a bool");
static_assert(!std::is_constructible_v<CString, void*> && !std::is_constructible_v<CString, const unsigned char*>);
static_assert(!std::is_assignable_v<CString&, const char*> && !std::is_assignable_v<CString&, const char (&)[4]>);
static_assert(!std::is_assignable_v<CString&, void*>);
static_assert(!std::is_convertible_v<const char*, CString>);
static_assert(std::is_constructible_v<CString, wchar_t*> && std::is_assignable_v<CString&, wchar_t*>);
static_assert(std::is_convertible_v<const wchar_t*, CString> && std::is_assignable_v<CString&, const wchar_t*>);
static_assert(std::is_nothrow_move_constructible_v<CString> && std::is_nothrow_move_assignable_v<CString>);
static_assert(sizeof(CString) == sizeof(CObject) + 2 * sizeof(void*), "a buffer and a length are all it adds");

// A string's text in a form that GoogleTest compares and that tells null and blank apart.
std::wstring textOf(const CString& strText) {
    if (strText.isEmpty())
        return strText.length() == 0 ? L"<null>" : L"<null with a length>";
    if (strText.getBuffer()[strText.length()] != 0)
        return L"<no terminator>";
    return std::wstring(strText.getBuffer(), strText.length());
}

const wchar_t* const NULL_TEXT = nullptr;

struct tagFieldProbe : CString {
    bool isInOrder() const { return static_cast<const void*>(&m_pBuffer + 1) == &m_uiLength; }
};

TEST(CString, LengthFollowsTheBuffer) { EXPECT_TRUE(tagFieldProbe().isInOrder()); }

TEST(CString, NullAndBlankAreToldApart) {
    const CString strNull;
    const CString strBlank(L"");
    EXPECT_TRUE(strNull.isEmpty());
    EXPECT_FALSE(strBlank.isEmpty());
    EXPECT_EQ(strNull.length(), 0u);
    EXPECT_EQ(strBlank.length(), 0u);
    EXPECT_EQ(strNull.getBuffer(), nullptr);
    EXPECT_STREQ(strBlank.getBuffer(), L"");
    EXPECT_TRUE(strNull == strBlank);
    EXPECT_FALSE(strNull != strBlank);
    EXPECT_EQ(strNull.compare(strBlank), 0);
}

TEST(CString, GlobalNullStringIsNull) {
    EXPECT_TRUE(STRING_NULL.isEmpty());
    EXPECT_EQ(STRING_NULL.length(), 0u);
}

TEST(CString, IsBuiltFromText) {
    wchar_t aryText[] = L"abc";
    EXPECT_EQ(textOf(CString(NULL_TEXT)), L"<null>");
    EXPECT_EQ(textOf(CString(nullptr)), L"<null>");
    EXPECT_EQ(textOf(CString(L"")), L"");
    EXPECT_EQ(textOf(CString(aryText)), L"abc");
    EXPECT_EQ(textOf(CString(L"abc", 2)), L"ab");
    EXPECT_EQ(textOf(CString(L"abc", 3)), L"abc");
    EXPECT_EQ(textOf(CString(L"abc", 9)), L"abc");
    EXPECT_EQ(textOf(CString(L"abc", 0)), L"");
    EXPECT_EQ(textOf(CString(L"", 3)), L"");
    EXPECT_EQ(textOf(CString(NULL_TEXT, 3)), L"");
}

TEST(CString, IsBuiltFromNumbers) {
    EXPECT_EQ(textOf(CString(-12)), L"-12");
    EXPECT_EQ(textOf(CString(4000000000u)), L"4000000000");
    EXPECT_EQ(textOf(CString(-9000000000L)), L"-9000000000");
    EXPECT_EQ(textOf(CString(true)), L"true");
    EXPECT_EQ(textOf(CString(false)), L"false");
    wchar_t aryText[32] = {};
    CStringConverter::toString(1.5f, aryText, 4);
    EXPECT_EQ(textOf(CString(1.5f)), aryText);
}

TEST(CString, IsAssignedNumbers) {
    CString strText(L"old");
    EXPECT_EQ(textOf(strText = -12), L"-12");
    EXPECT_EQ(textOf(strText = 4000000000u), L"4000000000");
    EXPECT_EQ(textOf(strText = -9000000000L), L"-9000000000");
    EXPECT_EQ(textOf(strText = true), L"true");
    EXPECT_EQ(textOf(strText = false), L"false");
    wchar_t aryText[32] = {};
    CStringConverter::toString(-2.25f, aryText, 4);
    EXPECT_EQ(textOf(strText = -2.25f), aryText);
}

TEST(CString, CopiesAreDeepAndKeepTheKindOfEmptiness) {
    const CString strText(L"abc");
    CString strCopy(strText);
    EXPECT_NE(strCopy.getBuffer(), strText.getBuffer());
    strCopy.replaceAt(0, L'x');
    EXPECT_EQ(textOf(strText), L"abc");
    EXPECT_EQ(textOf(strCopy), L"xbc");
    const CString strNull;
    const CString strBlank(L"");
    EXPECT_EQ(textOf(CString(strNull)), L"<null>");
    EXPECT_EQ(textOf(CString(strBlank)), L"");
    EXPECT_EQ(textOf(strCopy = strText), L"abc");
    EXPECT_NE(strCopy.getBuffer(), strText.getBuffer());
    EXPECT_EQ(textOf(strCopy = strBlank), L"");
    EXPECT_EQ(textOf(strCopy = strNull), L"<null>");
}

TEST(CString, IsAssignedText) {
    wchar_t aryText[] = L"abc";
    CString strText(L"old");
    EXPECT_EQ(textOf(strText = aryText), L"abc");
    EXPECT_EQ(textOf(strText = L""), L"");
    EXPECT_EQ(textOf(strText = NULL_TEXT), L"<null>");
    strText = L"again";
    EXPECT_EQ(textOf(strText = nullptr), L"<null>");
}

TEST(CString, AssigningItsOwnBufferChangesNothing) {
    CString strText(L"abc");
    const wchar_t* const pBuffer = strText.getBuffer();
    strText = pBuffer;
    EXPECT_EQ(strText.getBuffer(), pBuffer);
    const CString& strSame = strText;
    strText = strSame;
    EXPECT_EQ(strText.getBuffer(), pBuffer);
    CString& strTarget = strText;
    strTarget = std::move(strText);
    EXPECT_EQ(strText.getBuffer(), pBuffer);
    EXPECT_EQ(textOf(strText), L"abc");
}

TEST(CString, MovingTakesTheBufferAndLeavesNull) {
    CString strSource(L"abc");
    const wchar_t* const pBuffer = strSource.getBuffer();
    CString strFirst(std::move(strSource));
    EXPECT_EQ(strFirst.getBuffer(), pBuffer);
    EXPECT_EQ(strFirst.length(), 3u);
    EXPECT_EQ(textOf(strSource), L"<null>");
    CString strSecond(L"old");
    strSecond = std::move(strFirst);
    EXPECT_EQ(strSecond.getBuffer(), pBuffer);
    EXPECT_EQ(textOf(strSecond), L"abc");
    EXPECT_EQ(textOf(strFirst), L"<null>");
    strSecond = std::move(strFirst);
    EXPECT_EQ(textOf(strSecond), L"<null>");
}

TEST(CString, SourceMayLieInItsOwnBuffer) {
    const auto build = [] { return CString(L"abcdef"); };
    CString strText = build();
    EXPECT_EQ(textOf(strText = strText.getBuffer() + 2), L"cdef");
    strText = build();
    strText.fromBuffer(strText.getBuffer() + 1, 3);
    EXPECT_EQ(textOf(strText), L"bcd");
    strText = build();
    EXPECT_EQ(textOf(strText.append(strText.getBuffer())), L"abcdefabcdef");
    strText = build();
    EXPECT_EQ(textOf(strText.append(strText.getBuffer() + 2, 3)), L"abcdefcde");
    strText = build();
    strText.insertString(1, strText.getBuffer() + 3);
    EXPECT_EQ(textOf(strText), L"adefbcdef");
    strText = build();
    strText.insertString(2, strText.getBuffer(), 4);
    EXPECT_EQ(textOf(strText), L"ababcdcdef");
    strText = build();
    strText.insertString(2, strText);
    EXPECT_EQ(textOf(strText), L"ababcdefcdef");
    strText = build();
    strText.replaceFirst(strText.getBuffer() + 3, strText.getBuffer());
    EXPECT_EQ(textOf(strText), L"abcabcdef");
    strText = L"a.ab";
    strText.replaceAll(strText.getBuffer() + 3, strText.getBuffer());
    EXPECT_EQ(textOf(strText), L"a.aa.ab");
    strText = build();
    EXPECT_EQ(textOf(strText = strText + strText), L"abcdefabcdef");
}

TEST(CString, FreeAndEmptyMakeNull) {
    CString strText(L"abc");
    strText.free();
    EXPECT_EQ(textOf(strText), L"<null>");
    strText.free();
    strText = L"abc";
    strText.empty();
    EXPECT_EQ(textOf(strText), L"<null>");
}

TEST(CString, BufferIsDetachedAndAttached) {
    CString strText(L"abc");
    wchar_t* pBuffer = strText.detach();
    EXPECT_EQ(textOf(strText), L"<null>");
    EXPECT_STREQ(pBuffer, L"abc");
    CString strOther(L"old");
    strOther.attach(pBuffer, -1);
    EXPECT_EQ(strOther.getBuffer(), pBuffer);
    EXPECT_EQ(strOther.length(), 3u);
    strOther.attach(pBuffer, 3);
    EXPECT_EQ(textOf(strOther), L"abc") << "its own buffer is not freed";
    EXPECT_NE(CString(L"xyz").getBuffer(), pBuffer) << "nor given to another string";
    pBuffer = strOther.detach();
    pBuffer[2] = 0;
    strOther.attach(pBuffer, 2);
    EXPECT_EQ(textOf(strOther), L"ab");
    strOther.attach(nullptr, 5);
    EXPECT_EQ(textOf(strOther), L"<null>");
    EXPECT_EQ(strOther.detach(), nullptr);
}

TEST(CString, FromBufferCopiesTheLesserCount) {
    CString strText(L"old");
    strText.fromBuffer(L"abc", 2);
    EXPECT_EQ(textOf(strText), L"ab");
    strText.fromBuffer(L"abc", 7);
    EXPECT_EQ(textOf(strText), L"abc");
    strText.fromBuffer(L"abc", 0);
    EXPECT_EQ(textOf(strText), L"");
    strText = L"old";
    strText.fromBuffer(nullptr, 3);
    EXPECT_EQ(textOf(strText), L"");
}

TEST(CString, ToBufferCopiesWhatFits) {
    const CString strText(L"abc");
    wchar_t aryTarget[] = L"uvwxyz";
    EXPECT_EQ(strText.toBuffer(aryTarget, 3), 2u);
    EXPECT_EQ(std::wmemcmp(aryTarget, L"ab\0xyz", 7), 0);
    EXPECT_EQ(strText.toBuffer(aryTarget, 6), 3u);
    EXPECT_EQ(std::wmemcmp(aryTarget, L"abc\0yz", 7), 0);
    EXPECT_EQ(strText.toBuffer(aryTarget, 4), 3u);
    EXPECT_EQ(strText.toBuffer(aryTarget, 1), 0u);
    EXPECT_EQ(aryTarget[0], 0);
}

TEST(CString, ToBufferWithoutTextOrRoomTouchesNothing) {
    wchar_t aryTarget[] = L"xyz";
    EXPECT_EQ(CString().toBuffer(aryTarget, 4), 0u);
    EXPECT_EQ(CString(L"").toBuffer(aryTarget, 4), 0u);
    EXPECT_EQ(CString(L"abc").toBuffer(aryTarget, 0), 0u);
    EXPECT_STREQ(aryTarget, L"xyz");
    EXPECT_EQ(CString(L"abc").toBuffer(nullptr, 4), 0u);
}

TEST(CString, CharactersAreReadWithinTheLength) {
    const CString strText(L"abca");
    EXPECT_EQ(strText.charAt(0), L'a');
    EXPECT_EQ(strText.charAt(3), L'a');
    EXPECT_EQ(strText.charAt(4), 0);
    EXPECT_EQ(strText.charAt(4000000000u), 0);
    EXPECT_EQ(CString().charAt(0), 0);
    EXPECT_EQ(strText.charCount(L'a'), 2u);
    EXPECT_EQ(strText.charCount(L'z'), 0u);
    EXPECT_EQ(CString().charCount(L'a'), 0u);
    EXPECT_EQ(strText.indexOf(L'a'), 0);
    EXPECT_EQ(strText.lastIndexOf(L'a'), 3);
    EXPECT_EQ(strText.indexOf(L'z'), -1);
    EXPECT_EQ(strText.lastIndexOf(L'z'), -1);
    EXPECT_EQ(CString().indexOf(L'a'), -1);
    EXPECT_EQ(CString().lastIndexOf(L'a'), -1);
}

TEST(CString, MatchesAreFoundAsIndexIntoTheWholeString) {
    const CString strText(L"abcabc");
    const struct {
        const wchar_t* pPattern;
        unsigned int uiStart;
        int iFound, iLast;
    } aryRow[] = {{L"bc", 0, 1, 4},    {L"bc", 1, 1, 4},  {L"bc", 2, 4, 4},        {L"bc", 5, -1, 4},
                  {L"c", 5, 5, 5},     {L"c", 6, -1, 5},  {L"c", 7, -1, 5},        {L"c", 4000000000u, -1, 5},
                  {L"", 0, -1, -1},    {L"x", 0, -1, -1}, {L"abcabca", 0, -1, -1}, {nullptr, 0, -1, -1},
                  {L"abcabc", 0, 0, 0}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(strText.indexOf(row.pPattern, row.uiStart), row.iFound) << &row - aryRow;
        EXPECT_EQ(strText.indexOf(CString(row.pPattern), row.uiStart), row.iFound) << &row - aryRow;
        EXPECT_EQ(strText.lastIndexOf(row.pPattern), row.iLast) << &row - aryRow;
        EXPECT_EQ(strText.lastIndexOf(CString(row.pPattern)), row.iLast) << &row - aryRow;
    }
    EXPECT_EQ(CString().indexOf(L"a", 0), -1);
    EXPECT_EQ(CString().lastIndexOf(L"a"), -1);
}

TEST(CString, NothingBeginsWithAnEmptyText) {
    const CString strText(L"abc");
    EXPECT_TRUE(strText.startWith(L"ab"));
    EXPECT_TRUE(strText.startWith(CString(L"abc")));
    EXPECT_FALSE(strText.startWith(L"AB"));
    EXPECT_FALSE(strText.startWith(CString(L"b")));
    EXPECT_FALSE(strText.startWith(CString(L"AB")));
    EXPECT_TRUE(strText.startWithIC(L"AB"));
    EXPECT_TRUE(strText.startWithIC(CString(L"aB")));
    EXPECT_FALSE(strText.startWithIC(L"abcd"));
    EXPECT_FALSE(strText.startWith(L""));
    EXPECT_FALSE(strText.startWith(CString()));
    EXPECT_FALSE(CString(L"").startWith(L""));
    EXPECT_FALSE(CString().startWith(CString()));
    EXPECT_FALSE(CString(L"").startWithIC(CString(L"")));
}

TEST(CString, ComparesInBothDirections) {
    const CString strText(L"abc");
    wchar_t aryText[] = L"abc";
    EXPECT_EQ(strText.compare(L"abcd"), -1);
    EXPECT_EQ(strText.compare(CString(L"abb")), 1);
    EXPECT_EQ(strText.compare(aryText), 0);
    EXPECT_EQ(strText.compare(NULL_TEXT), 1);
    EXPECT_EQ(strText.compare(L"ABC"), 1);
    EXPECT_EQ(strText.compareIC(L"ABC"), 0);
    EXPECT_EQ(strText.compareIC(CString(L"ABD")), -1);
    EXPECT_EQ(strText.compareReverse(CString(L"xabc")), -1);
    EXPECT_EQ(strText.compareReverse(CString(L"bc")), 1);
    EXPECT_EQ(strText.compareReverse(CString(L"aBC")), 1);
    EXPECT_EQ(strText.compareReverseIC(CString(L"aBC")), 0);
    EXPECT_EQ(strText.compareReverseIC(CString(L"ZBD")), -1);
    EXPECT_EQ(CString().compareReverse(CString(L"")), 0);
    EXPECT_EQ(CString().compareReverse(strText), -1);
    EXPECT_TRUE(strText == aryText);
    EXPECT_TRUE(strText == CString(L"abc"));
    EXPECT_FALSE(strText == L"Abc");
    EXPECT_FALSE(strText == CString(L"Abc"));
    EXPECT_TRUE(strText != L"Abc");
    EXPECT_TRUE(strText != CString(L"Abc"));
    EXPECT_TRUE(strText != CString(L"ab"));
    EXPECT_TRUE(strText != NULL_TEXT);
    EXPECT_TRUE(CString() == NULL_TEXT);
    EXPECT_FALSE(strText != L"abc");
}

TEST(CString, NumbersAreRead) {
    EXPECT_TRUE(CString(L"7a").isNumberStart());
    EXPECT_FALSE(CString(L"a7").isNumberStart());
    EXPECT_FALSE(CString(L"").isNumberStart());
    EXPECT_FALSE(CString().isNumberStart());
    EXPECT_EQ(CString(L"-12x").toInt(), -12);
    EXPECT_EQ(CString(L"0x10").toUInt(), 16u);
    EXPECT_EQ(CString(L"-9000000000").toLLong(), -9000000000L);
    EXPECT_EQ(CString(L"0.5").toFloat(), 0.5f);
    EXPECT_TRUE(CString(L"true").toBool());
    EXPECT_FALSE(CString(L"True").toBool());
    EXPECT_EQ(CString().toInt(), 0);
    EXPECT_EQ(CString().toUInt(), 0u);
    EXPECT_EQ(CString().toLLong(), 0);
    EXPECT_EQ(CString().toFloat(), 0.0f);
    EXPECT_FALSE(CString().toBool());
}

TEST(CString, PartsAreTaken) {
    const CString strText(L"abcd");
    EXPECT_EQ(textOf(strText.subString(2, 0)), L"cd");
    EXPECT_EQ(textOf(strText.subString(1, 2)), L"bc");
    EXPECT_EQ(textOf(strText.subString(1, 3)), L"bcd");
    EXPECT_EQ(textOf(strText.subString(1, 4000000000u)), L"bcd");
    EXPECT_EQ(textOf(strText.subString(0, 4)), L"abcd");
    EXPECT_EQ(textOf(strText.subString(4, 1)), L"<null>");
    EXPECT_EQ(textOf(strText.subString(9, 0)), L"<null>");
    EXPECT_EQ(textOf(CString(L"").subString(0, 0)), L"<null>");
    EXPECT_EQ(textOf(CString().subString(0, 1)), L"<null>");
}

TEST(CString, LeadingBlanksAreTaken) {
    const CString strText(L" \t\r\nab ");
    EXPECT_EQ(strText.getStarkBlankCount(), 4u);
    EXPECT_EQ(textOf(strText.getStartBlank()), L" \t\r\n");
    EXPECT_EQ(CString(L"ab ").getStarkBlankCount(), 0u);
    EXPECT_EQ(textOf(CString(L"ab ").getStartBlank()), L"<null>");
    EXPECT_EQ(textOf(CString().getStartBlank()), L"<null>");
    EXPECT_EQ(textOf(CString(L"  ").getStartBlank()), L"  ");
}

TEST(CString, SumsAreNewStrings) {
    const CString strText(L"ab");
    wchar_t aryText[] = L"cd";
    EXPECT_EQ(textOf(strText + aryText), L"abcd");
    EXPECT_EQ(textOf(strText + CString(L"cd")), L"abcd");
    EXPECT_EQ(textOf(strText + NULL_TEXT), L"ab");
    EXPECT_EQ(textOf(strText + STRING_NULL), L"ab");
    EXPECT_EQ(textOf(CString() + L"cd"), L"cd");
    EXPECT_EQ(textOf(CString() + L""), L"<null>");
    EXPECT_EQ(textOf(CString(L"") + CString(L"")), L"<null>");
    EXPECT_EQ(textOf(strText), L"ab");
}

TEST(CString, TextIsAppended) {
    CString strText;
    EXPECT_EQ(textOf(strText.append(L"")), L"<null>");
    EXPECT_EQ(textOf(strText.append(NULL_TEXT)), L"<null>");
    EXPECT_EQ(textOf(strText.append(L"ab", 0)), L"<null>");
    EXPECT_EQ(&strText.append(L"ab"), &strText);
    EXPECT_EQ(textOf(strText), L"ab");
    EXPECT_EQ(&strText.append(L"cdef", 2), &strText);
    EXPECT_EQ(textOf(strText), L"abcd");
}

TEST(CString, AppendBelievesACountBeyondTheText) {
    CString strText(L"ab");
    strText.append(L"c", 3);
    EXPECT_EQ(strText.length(), 5u);
    EXPECT_EQ(std::wmemcmp(strText.getBuffer(), L"abc\0\0", 6), 0);
    EXPECT_TRUE(strText == L"abc");
    strText = L"ab";
    strText.append(NULL_TEXT, 2);
    EXPECT_EQ(strText.length(), 4u);
    EXPECT_TRUE(strText == L"ab");
}

TEST(CString, TextIsInserted) {
    const struct {
        const wchar_t* pText;
        unsigned int uiPos;
        const wchar_t* pInsert;
        unsigned int uiCount;
        const wchar_t* pCounted;
        const wchar_t* pWhole;
    } aryRow[] = {{L"abc", 0, L"xyz", 2, L"xyabc", L"xyzabc"},  {L"abc", 2, L"xyz", 1, L"abxc", L"abxyzc"},
                  {L"abc", 3, L"xyz", 1, L"abcxyz", L"abcxyz"}, {L"abc", 9, L"xyz", 0, L"abcxyz", L"abcxyz"},
                  {L"abc", 1, L"xyz", 0, L"abc", L"axyzbc"},    {L"abc", 1, L"xyz", 9, L"axyzbc", L"axyzbc"},
                  {L"abc", 1, L"", 2, L"abc", L"abc"},          {L"abc", 1, nullptr, 2, L"abc", L"abc"},
                  {nullptr, 0, L"xyz", 1, L"xyz", L"xyz"},      {nullptr, 0, L"", 1, L"<null>", L"<null>"},
                  {L"", 0, L"xyz", 1, L"xyz", L"xyz"}};
    for (const auto& row : aryRow) {
        CString strText(row.pText);
        strText.insertString(row.uiPos, row.pInsert, row.uiCount);
        EXPECT_EQ(textOf(strText), row.pCounted) << &row - aryRow;
        strText = row.pText;
        strText.insertString(row.uiPos, row.pInsert);
        EXPECT_EQ(textOf(strText), row.pWhole) << &row - aryRow;
        strText = row.pText;
        strText.insertString(row.uiPos, CString(row.pInsert));
        EXPECT_EQ(textOf(strText), row.pWhole) << &row - aryRow;
    }
}

TEST(CString, TextIsDeletedInPlace) {
    const struct {
        unsigned int uiPos, uiCount;
        const wchar_t* pLeft;
    } aryRow[] = {{0, 2, L"cdef"}, {2, 2, L"abef"},   {4, 2, L"abcd"},   {5, 4000000000u, L"abcde"},
                  {0, 6, L""},     {6, 1, L"abcdef"}, {9, 1, L"abcdef"}, {2, 0, L"abcdef"}};
    for (const auto& row : aryRow) {
        CString strText(L"abcdef");
        const wchar_t* const pBuffer = strText.getBuffer();
        strText.deleteString(row.uiPos, row.uiCount);
        EXPECT_EQ(textOf(strText), row.pLeft) << &row - aryRow;
        EXPECT_EQ(strText.getBuffer(), pBuffer) << &row - aryRow;
    }
    CString strNull;
    strNull.deleteString(0, 1);
    EXPECT_EQ(textOf(strNull), L"<null>");
}

TEST(CString, CharactersAreReplacedInPlace) {
    CString strText(L"abcabc");
    const wchar_t* const pBuffer = strText.getBuffer();
    strText.replace(L'a', L'x');
    EXPECT_EQ(textOf(strText), L"xbcxbc");
    strText.replaceAt(1, L'y');
    strText.replaceAt(7, L'z');
    EXPECT_EQ(textOf(strText), L"xycxbc");
    EXPECT_EQ(strText.getBuffer(), pBuffer);
    CString strNull;
    strNull.replace(L'a', L'b');
    strNull.replaceAt(0, L'a');
    EXPECT_EQ(textOf(strNull), L"<null>");
}

TEST(CString, ReplacingAtTheLengthOverwritesTheTerminator) {
    CString strText(L"abc");
    strText.replaceAt(3, L'd');
    EXPECT_EQ(strText.length(), 3u);
    EXPECT_EQ(strText.getBuffer()[3], L'd');
    strText.replaceAt(3, 0);
    EXPECT_EQ(textOf(strText), L"abc");
}

TEST(CString, TextIsReplaced) {
    const struct {
        const wchar_t* pText;
        const wchar_t* pFrom;
        const wchar_t* pTo;
        const wchar_t* pFirst;
        const wchar_t* pAll;
    } aryRow[] = {{L"abcabc", L"b", L"xy", L"axycabc", L"axycaxyc"}, {L"abcabc", L"bc", L"", L"aabc", L"aa"},
                  {L"abcabc", L"bc", nullptr, L"aabc", L"aa"},       {L"abcabc", L"abc", L"", L"abc", L""},
                  {L"abcabc", L"x", L"y", L"abcabc", L"abcabc"},     {L"abcabc", L"", L"y", L"abcabc", L"abcabc"},
                  {L"abcabc", nullptr, L"y", L"abcabc", L"abcabc"},  {L"aaaa", L"aa", L"a", L"aaa", L"aa"},
                  {L"aaaaa", L"aa", L"b", L"baaa", L"bba"},          {L"aa", L"a", L"aa", L"aaa", L"aaaa"},
                  {L"abc", L"abc", L"xyz", L"xyz", L"xyz"},          {L"", L"a", L"b", L"", L""},
                  {nullptr, L"a", L"b", L"<null>", L"<null>"}};
    for (const auto& row : aryRow) {
        CString strText(row.pText);
        strText.replaceFirst(row.pFrom, row.pTo);
        EXPECT_EQ(textOf(strText), row.pFirst) << &row - aryRow;
        strText = row.pText;
        strText.replaceAll(row.pFrom, row.pTo);
        EXPECT_EQ(textOf(strText), row.pAll) << &row - aryRow;
    }
}

TEST(CString, ReplacingKeepsTheBufferWhereNothingIsFound) {
    CString strText(L"abc");
    const wchar_t* const pBuffer = strText.getBuffer();
    strText.replaceFirst(L"x", L"y");
    strText.replaceAll(L"x", L"y");
    EXPECT_EQ(strText.getBuffer(), pBuffer);
}

TEST(CString, ReplacingMeasuresTheResultAgain) {
    CString strText(L"ab");
    strText.append(L"c", 4);
    strText.replaceFirst(L"a", L"xx");
    EXPECT_EQ(textOf(strText), L"xxbc");
    strText.append(L"c", 4);
    strText.replaceAll(L"x", L"y");
    EXPECT_EQ(textOf(strText), L"yybcc");
}

TEST(CString, AnyNumberOfMatchesIsReplaced) {
    for (const unsigned int uiCount : {255u, 256u, 257u, 3000u}) {
        CString strText;
        std::wstring strExpected = L"begin ";
        std::wstring strSource = strExpected;
        for (unsigned int i = 0; i < uiCount; ++i) {
            strSource += L"from,";
            strExpected += L"to there,";
        }
        strText = (strSource + L"end").c_str();
        strText.replaceAll(L"from", L"to there");
        EXPECT_EQ(textOf(strText), strExpected + L"end") << uiCount;
    }
}

TEST(CString, CaseIsFoldedInPlace) {
    CString strText(L"aZ1\u00F7\u00F8\u0451");
    strText.toUppercase();
    EXPECT_EQ(textOf(strText), L"AZ1\u00D7\u00F8\u0401");
    strText.toLowercase();
    EXPECT_EQ(textOf(strText), L"az1\u00F7\u00F8\u0451");
    CString strNull;
    strNull.toUppercase();
    strNull.toLowercase();
    EXPECT_EQ(textOf(strNull), L"<null>");
}

TEST(CString, BlanksAreTrimmed) {
    const struct {
        const wchar_t* pText;
        bool bStart, bEnd;
        const wchar_t* pLeft;
    } aryRow[] = {{L" \tab\r\n", true, true, L"ab"},
                  {L" \tab\r\n", true, false, L"ab\r\n"},
                  {L" \tab\r\n", false, true, L" \tab"},
                  {L" a b ", false, false, L" a b "},
                  {L" a b ", true, true, L"a b"},
                  {L"   ", true, true, L""},
                  {L"   ", true, false, L""},
                  {L"   ", false, true, L""},
                  {L"", true, true, L""},
                  {nullptr, true, true, L"<null>"}};
    for (const auto& row : aryRow) {
        CString strText(row.pText);
        strText.trimBlank(row.bStart, row.bEnd);
        EXPECT_EQ(textOf(strText), row.pLeft) << &row - aryRow;
    }
}

TEST(CString, TrimmingBlanksKeepsTheBufferWhereNothingIsCut) {
    CString strText(L"ab");
    const wchar_t* const pBuffer = strText.getBuffer();
    strText.trimBlank(true, true);
    EXPECT_EQ(strText.getBuffer(), pBuffer);
}

TEST(CString, TrimmingACharacterAlwaysBuildsANewBuffer) {
    CString strText(L"ab");
    const wchar_t* const pBuffer = strText.getBuffer();
    strText.trim(L'x');
    EXPECT_NE(strText.getBuffer(), pBuffer);
    EXPECT_EQ(textOf(strText), L"ab");
}

TEST(CString, CharacterIsTrimmedAndNullBecomesBlank) {
    const struct {
        const wchar_t* pText;
        const wchar_t* pBoth;
        const wchar_t* pStart;
        const wchar_t* pEnd;
    } aryRow[] = {{L"xxaxbx", L"axb", L"axbx", L"xxaxb"},
                  {L"axb", L"axb", L"axb", L"axb"},
                  {L"xxx", L"", L"", L""},
                  {L"", L"", L"", L""},
                  {nullptr, L"", L"", L""}};
    for (const auto& row : aryRow) {
        CString strBoth(row.pText), strStart(row.pText), strEnd(row.pText);
        strBoth.trim(L'x');
        strStart.trimStart(L'x');
        strEnd.trimEnd(L'x');
        EXPECT_EQ(textOf(strBoth), row.pBoth) << &row - aryRow;
        EXPECT_EQ(textOf(strStart), row.pStart) << &row - aryRow;
        EXPECT_EQ(textOf(strEnd), row.pEnd) << &row - aryRow;
    }
}

TEST(CString, CopyStartsWithoutReferences) {
    CString strText(L"abc");
    strText.addRef();
    const CString strCopy(strText);
    const CString strMoved(std::move(strText));
    EXPECT_EQ(strCopy.getRef(), 0);
    EXPECT_EQ(strMoved.getRef(), 0);
}

TEST(CString, ChangeTooLongForMemoryLeavesTheStringAsItWas) {
    CString strText(L"abc");
    strText.append(L"d", 0x40000000u);
    EXPECT_EQ(textOf(strText), L"abc");
    strText.append(L"d", 0xFFFFFFFFu);
    EXPECT_EQ(textOf(strText), L"abc");
}

TEST(CString, EachBufferThatIsReplacedGoesBackToTheHeap) {
    const std::wstring strLong = L" " + std::wstring(500, L'a') + std::wstring(500, L'b') + L" ";
    const auto changeOften = [&] {
        CString strText(strLong.c_str());
        CString strOther(strText);
        strText.append(strLong.c_str());
        strText.append(L"x", 3);
        strText.insertString(1, strLong.c_str());
        strText.insertString(1, strOther);
        strText.replaceFirst(L"ab", L"to");
        strText.replaceAll(L"a", L"to");
        strText.trimBlank(true, true);
        strText.trim(L'b');
        strText.toUppercase();
        strText.fromBuffer(strLong.c_str(), 900);
        strText = strOther + strText;
        strText = strOther;
        strText = strLong.c_str();
        strText = std::move(strOther);
        strOther.attach(strText.detach(), -1);
        strText = strOther;
        strOther.attach(strText.detach(), -1);
        strText = strOther.subString(1, 0);
        strText.empty();
        strText = strOther;
        strText = nullptr;
    };
    EXPECT_EQ(OrlixTest::getLeftOnHeap(changeOften), 0u);
}

std::wstring replaceAllOf(std::wstring strText, const std::wstring& strFrom, const std::wstring& strTo) {
    for (std::size_t i = 0; (i = strText.find(strFrom, i)) != std::wstring::npos; i += strTo.size())
        strText.replace(i, strFrom.size(), strTo);
    return strText;
}

// Each operation at random on a string and on its model, which must agree after every step.
TEST(CString, AgreesWithAModelOverRandomOperations) {
    std::mt19937 random(20240607);
    const auto pick = [&](unsigned int uiBelow) { return static_cast<unsigned int>(random() % uiBelow); };
    const auto pickText = [&](unsigned int uiMost) {
        std::wstring strText;
        for (unsigned int i = 1 + pick(uiMost); i > 0; --i)
            strText += L"ab c"[pick(4)];
        return strText;
    };
    CString strText(L"");
    std::wstring strModel;
    for (unsigned int uiStep = 0; uiStep < 60000; ++uiStep) {
        const std::wstring strArg = pickText(4);
        const std::wstring strOther = pickText(3);
        const unsigned int uiPos = pick(static_cast<unsigned int>(strModel.size()) + 3);
        const unsigned int uiCount = 1 + pick(6);
        const unsigned int uiOperation = pick(14);
        switch (uiOperation) {
        case 0:
            strText.append(strArg.c_str());
            strModel += strArg;
            break;
        case 1:
            strText.insertString(uiPos, strArg.c_str());
            strModel.insert(std::min<std::size_t>(uiPos, strModel.size()), strArg);
            break;
        case 2:
            strText.deleteString(uiPos, uiCount);
            if (uiPos < strModel.size())
                strModel.erase(uiPos, uiCount);
            break;
        case 3:
            strText.replaceAll(strArg.c_str(), strOther.c_str());
            strModel = replaceAllOf(strModel, strArg, strOther);
            break;
        case 4: {
            strText.replaceFirst(strArg.c_str(), strOther.c_str());
            const std::size_t uiFound = strModel.find(strArg);
            if (uiFound != std::wstring::npos)
                strModel.replace(uiFound, strArg.size(), strOther);
            break;
        }
        case 5: {
            strText.trimBlank(true, true);
            const std::size_t uiFirst = strModel.find_first_not_of(L' ');
            strModel = uiFirst == std::wstring::npos
                           ? std::wstring()
                           : strModel.substr(uiFirst, strModel.find_last_not_of(L' ') + 1 - uiFirst);
            break;
        }
        case 6: {
            strText.trimEnd(L'a');
            strModel.erase(strModel.find_last_not_of(L'a') + 1);
            break;
        }
        case 7:
            EXPECT_EQ(strText.indexOf(strArg.c_str(), uiPos), static_cast<int>(strModel.find(strArg, uiPos)));
            break;
        case 8:
            EXPECT_EQ(strText.lastIndexOf(strArg.c_str()), static_cast<int>(strModel.rfind(strArg)));
            break;
        case 9:
            EXPECT_EQ(strText.indexOf(strArg[0]), static_cast<int>(strModel.find(strArg[0])));
            EXPECT_EQ(strText.lastIndexOf(strArg[0]), static_cast<int>(strModel.rfind(strArg[0])));
            break;
        case 10: {
            const int iOrder = strModel.compare(strArg);
            EXPECT_EQ(strText.compare(strArg.c_str()), (iOrder > 0) - (iOrder < 0));
            EXPECT_EQ(strText.startWith(strArg.c_str()), strModel.compare(0, strArg.size(), strArg) == 0);
            break;
        }
        case 11:
            if (uiPos < strModel.size()) {
                EXPECT_EQ(textOf(strText.subString(uiPos, uiCount)), strModel.substr(uiPos, uiCount));
            }
            break;
        case 12:
            strText = strText + strArg.c_str();
            strModel += strArg;
            break;
        default:
            if (strModel.size() > 300) {
                strText = strArg.c_str();
                strModel = strArg;
            }
            break;
        }
        ASSERT_EQ(textOf(strText), strModel) << "step " << uiStep << ", operation " << uiOperation;
    }
}
} // namespace
