#include <Orlix/formats/CXMLHelper.h>

#include <Orlix/foundation/CString.h>

#include <gtest/gtest.h>

#include <cwchar>
#include <string>

using namespace Orlix;

namespace {

std::wstring textOf(const CString& strText) {
    return strText.isEmpty() ? L"<null>" : std::wstring(strText.getBuffer(), strText.length());
}

std::wstring encode(const wchar_t* pText) {
    CString strResult;
    CXMLHelper::encodeSpecialChar(CString(pText), strResult);
    return textOf(strResult);
}

std::wstring decode(const wchar_t* pText) {
    CString strResult;
    CXMLHelper::decodeSpecialChar(CString(pText), strResult);
    return textOf(strResult);
}

TEST(CXMLHelper, EntityTableHasSevenEntriesInTheirOrder) {
    const struct {
        wchar_t ch;
        const wchar_t* pEntity;
        unsigned int uiLength;
    } aryRow[] = {{L'&', L"&amp;", 5},   {L'<', L"&lt;", 4},  {L'>', L"&gt;", 4}, {L'"', L"&quot;", 6},
                  {L'\'', L"&apos;", 6}, {L'\r', L"&cr;", 4}, {L'\n', L"&lf;", 4}};
    ASSERT_EQ(sizeof(XML_CHAR_ENC_CHAR_TABLE) / sizeof(wchar_t), 7u);
    ASSERT_EQ(sizeof(XML_CHAR_ENC_DEST_TABLE) / sizeof(const wchar_t*), 7u);
    ASSERT_EQ(sizeof(XML_CHAR_ENC_DEST_STR_LEN) / sizeof(unsigned int), 7u);
    for (unsigned int i = 0; i < 7; ++i) {
        EXPECT_EQ(XML_CHAR_ENC_CHAR_TABLE[i], aryRow[i].ch);
        EXPECT_STREQ(XML_CHAR_ENC_DEST_TABLE[i], aryRow[i].pEntity);
        EXPECT_EQ(XML_CHAR_ENC_DEST_STR_LEN[i], aryRow[i].uiLength);
    }
}

TEST(CXMLHelper, SkipBlankPassesOverExactlyFourCharacters) {
    const struct {
        const wchar_t* pText;
        unsigned int uiSkipped;
    } aryRow[] = {{L"", 0},       {L"a", 0},       {L" \t\r\n a ", 5}, {L"\v", 0},  {L" \f", 1},
                  {L"\x00a0", 0}, {L" \x3000", 1}, {L" \x0001", 1},    {L"    ", 4}};
    for (const auto& row : aryRow)
        EXPECT_EQ(CXMLHelper::skipBlank(row.pText), row.pText + row.uiSkipped) << row.pText;
    EXPECT_EQ(CXMLHelper::skipBlank(nullptr), nullptr);
}

TEST(CXMLHelper, ReadTagGivesTheValueAndThePositionBehindIt) {
    const struct {
        const wchar_t* pText;
        unsigned int uiRead;
        const wchar_t* pValue;
    } aryRow[] = {{L"tag='v'", 7, L"v"},
                  {L"tag=\"v w\"x", 9, L"v w"},
                  {L" \t tag \r= \n'v'", 14, L"v"},
                  {L"tag='v\" '", 7, L"v"},
                  {L"tag=\"&lt;'", 10, L"&lt;"}};
    for (const auto& row : aryRow) {
        CString strValue(L"old");
        EXPECT_EQ(CXMLHelper::readTag(row.pText, L"tag", strValue), row.pText + row.uiRead) << row.pText;
        EXPECT_EQ(textOf(strValue), row.pValue) << row.pText;
    }
}

TEST(CXMLHelper, ReadTagLeavesTheValueAloneWhenItIsEmpty) {
    CString strValue(L"old");
    const wchar_t* const pText = L"tag='\" ";
    EXPECT_EQ(CXMLHelper::readTag(pText, L"tag", strValue), pText + 6);
    EXPECT_EQ(textOf(strValue), L"old");
}

TEST(CXMLHelper, ReadTagRefusesWhatIsNotWhole) {
    const wchar_t* const aryText[] = {L"",     L"ta",   L"TAG='v'", L"other='v'", L"tags='v'", L"tag",     L"tag ",
                                      L"tag=", L"tag'", L"tag=v",   L"tag='",     L"tag='v",   L"tag: 'v'"};
    for (const wchar_t* const pText : aryText) {
        CString strValue(L"old");
        EXPECT_EQ(CXMLHelper::readTag(pText, L"tag", strValue), nullptr) << pText;
        EXPECT_EQ(textOf(strValue), L"old") << pText;
    }
}

TEST(CXMLHelper, ReadTagOfNullTextOrTagIsNull) {
    CString strValue(L"old");
    EXPECT_EQ(CXMLHelper::readTag(nullptr, L"tag", strValue), nullptr);
    EXPECT_EQ(CXMLHelper::readTag(L"tag='v'", nullptr, strValue), nullptr);
    EXPECT_EQ(CXMLHelper::readTag(L"='v'", L"", strValue), nullptr);
    EXPECT_EQ(textOf(strValue), L"old");
}

TEST(CXMLHelper, EncodesTheSevenCharactersAndNoOther) {
    EXPECT_EQ(encode(L"&<>\"'\r\n"), L"&amp;&lt;&gt;&quot;&apos;&cr;&lf;");
    EXPECT_EQ(encode(L"a\tb\x4e2d \x0001"), L"a\tb\x4e2d \x0001");
    EXPECT_EQ(encode(L"&lt;"), L"&amp;lt;");
    EXPECT_EQ(encode(L""), L"");
    EXPECT_EQ(encode(nullptr), L"") << "a blank string, also for a null one";
}

TEST(CXMLHelper, DecodesOncePerPositionAndWithCase) {
    EXPECT_EQ(decode(L"&amp;&lt;&gt;&quot;&apos;&cr;&lf;"), L"&<>\"'\r\n");
    EXPECT_EQ(decode(L"&amp;lt;"), L"&lt;");
    EXPECT_EQ(decode(L"&&amp;amp"), L"&&amp");
    EXPECT_EQ(decode(L"&LT;&lt &unknown;&#65;&"), L"&LT;&lt &unknown;&#65;&");
    EXPECT_EQ(decode(L""), L"<null>");
}

TEST(CXMLHelper, LengthsAreTakenAsGiven) {
    CString strResult;
    CXMLHelper::encodeSpecialChar(L"<a>", 2, strResult);
    EXPECT_EQ(textOf(strResult), L"&lt;a");
    CXMLHelper::encodeSpecialChar(L"<", 0, strResult);
    EXPECT_EQ(textOf(strResult), L"");
    CXMLHelper::decodeSpecialChar(L"&lt;a", 3, strResult);
    EXPECT_EQ(textOf(strResult), L"&lt") << "an entity that does not fit the range is none";
    CXMLHelper::decodeSpecialChar(L"&lt;", 0, strResult);
    EXPECT_EQ(textOf(strResult), L"<null>");
}

TEST(CXMLHelper, ResultMayBeTheSource) {
    CString strText(L"a<b");
    CXMLHelper::encodeSpecialChar(strText, strText);
    EXPECT_EQ(textOf(strText), L"a&lt;b");
    CXMLHelper::decodeSpecialChar(strText, strText);
    EXPECT_EQ(textOf(strText), L"a<b");
}
} // namespace
