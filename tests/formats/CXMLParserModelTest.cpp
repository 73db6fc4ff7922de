#include "formats/XMLReference.h"
#include "formats/XMLTreeAccess.h"

#include <Orlix/formats/CXMLParser.h>
#include <Orlix/foundation/CStringConverter.h>

#include <gtest/gtest.h>

#include <random>

using namespace Orlix;
using namespace OrlixTest;

namespace {

CString toString(const std::wstring& strText) {
    auto* const pText =
        static_cast<wchar_t*>(CMemory::malloc(static_cast<unsigned int>((strText.size() + 1) * sizeof(wchar_t)), 0));
    std::copy(strText.c_str(), strText.c_str() + strText.size() + 1, pText); // also what stands behind a zero
    CString strString;
    strString.attach(pText, static_cast<int>(strText.size()));
    return strString;
}

/** Makes documents by chance, always the same ones for the same seed. */
class CDocumentMaker {
public:
    explicit CDocumentMaker(unsigned int uiSeed) : m_random(uiSeed) {}

    unsigned int pick(unsigned int uiCount) { return static_cast<unsigned int>(m_random() % uiCount); }

    /** A document that parses. */
    std::wstring makeValid() {
        std::wstring strDocument;
        if (pick(3) == 0)
            strDocument = makeBlanks() == L"" ? L"<?xml version='1.0' encoding=\"UTF-8\"?>\r\n"
                                              : L"<?xml version = \"1.0'\tencoding = 'utf-16\" ?>";
        return strDocument + makeBlanks() + makeElement(0) + (pick(4) == 0 ? L"<behind the end" : L"");
    }

    /** The same with some characters changed, lost, put in or cut off. */
    std::wstring mutate(std::wstring strDocument) {
        for (unsigned int uiLeft = 1 + pick(4); uiLeft > 0 && !strDocument.empty(); --uiLeft) {
            const std::size_t uiPos = pick(static_cast<unsigned int>(strDocument.size()));
            switch (pick(5)) {
            case 0:
                strDocument[uiPos] = makeChar();
                break;
            case 1:
                strDocument.erase(uiPos, 1 + pick(3));
                break;
            case 2:
                strDocument.insert(uiPos, makeToken());
                break;
            case 3:
                strDocument.insert(
                    uiPos, strDocument.substr(pick(static_cast<unsigned int>(strDocument.size())), 1 + pick(12)));
                break;
            default:
                strDocument.resize(pick(8) == 0 ? uiPos : strDocument.size() - pick(3) % strDocument.size());
                break;
            }
        }
        return strDocument;
    }

private:
    std::mt19937 m_random;

    std::wstring makeBlanks() {
        std::wstring strBlanks;
        while (pick(3) == 0)
            strBlanks += L" \t\n\r"[pick(4)];
        return strBlanks;
    }

    std::wstring makeName(unsigned int uiMax) {
        std::wstring strName(1, L"abcXYZ_"[pick(7)]);
        while (pick(2) == 0)
            strName += L"az09-.:_B"[pick(9)];
        if (pick(200) == 0)
            strName.resize(uiMax - 1 + pick(3), L'n');
        return strName;
    }

    wchar_t makeChar() {
        static const wchar_t aryHard[] = L"<>&\"'/=!-? \t\r\n;abZ_0\x0001\x7f\x80\xe9\x4e2d\xd83d\xfeff";
        const unsigned int uiChar = pick(sizeof(aryHard) / sizeof(aryHard[0]) + 2);
        if (uiChar >= sizeof(aryHard) / sizeof(aryHard[0]))
            return uiChar % 2 == 0 ? L'\x10ffff' : static_cast<wchar_t>(0x80000041u);
        return aryHard[uiChar]; // the terminator too
    }

    std::wstring makeToken() {
        static const wchar_t* const aryToken[] = {L"<!--",   L"-->",     L"<!-->", L"</",        L"/>",
                                                  L"<a>",    L"</a>",    L"<?xml", L"?>",        L"=\"1\"",
                                                  L"x='y\"", L"&amp;",   L"&lf",   L"&#65;",     L"<![CDATA[x]]>",
                                                  L"\r\n",   L"a/\"1\"", L"b>'2'", L"<!-- c -->"};
        return aryToken[pick(sizeof(aryToken) / sizeof(aryToken[0]))];
    }

    std::wstring makeContent(const wchar_t* pForbidden, bool bStartsBlank) {
        std::wstring strContent;
        while (pick(5) != 0) {
            const std::wstring strPart = pick(4) == 0 ? makeToken() : std::wstring(1, makeChar());
            if (strPart[0] != 0 && strPart.find_first_of(pForbidden) == std::wstring::npos)
                strContent += strPart;
        }
        return bStartsBlank ? makeBlanks() + strContent : strContent;
    }

    std::wstring makeAttributes() {
        std::wstring strAttributes;
        while (pick(5) < 2) {
            strAttributes += makeBlanks() + (pick(9) == 0 ? L"7" : L"") + makeName(254) +
                             L"=/>"[pick(9) > 1 ? 0 : pick(3)] + makeBlanks();
            strAttributes += std::wstring(1, L"\"'"[pick(2)]) + makeContent(L"\"'", false) + L"\"'"[pick(2)];
        }
        return strAttributes + makeBlanks();
    }

    std::wstring makeComment() {
        return pick(6) == 0 ? L"<!--" + makeContent(L">", false) + L"-->" + makeBlanks() : L"";
    }

    std::wstring makeElement(unsigned int uiLevel) {
        const std::wstring strName = makeName(254);
        const std::wstring strAttributes = makeAttributes();
        std::wstring strElement = L"<" + strName + (strAttributes.empty() ? L"" : L" ") + strAttributes;
        if (pick(4) == 0)
            return strElement + L"/>";
        strElement += L">" + makeBlanks() + makeComment() + makeContent(L"<", true) + makeComment();
        for (unsigned int uiChildren = pick(uiLevel > 5 ? 1 : 4); uiChildren > 0; --uiChildren)
            strElement += makeElement(uiLevel + 1) + makeBlanks() + makeComment();
        return strElement + L"</" + strName + L">";
    }
};

void expectSame(const std::wstring& strDocument) {
    const tagXMLOutcome expected = readXML(strDocument);
    CXMLParser parser;
    const bool bParsed = parser.parseFromString(toString(strDocument));
    unsigned int uiLine = 0, uiColumn = 0;
    CString strErrorText;
    parser.getErrorPos(uiLine, uiColumn, strErrorText);
    ASSERT_EQ(bParsed, expected.bParsed) << strDocument;
    ASSERT_EQ(parser.hasRootElement(), bParsed);
    ASSERT_EQ(static_cast<int>(parser.getEncoding()), expected.iEncoding) << strDocument;
    ASSERT_EQ(uiLine, expected.uiLine) << strDocument;
    ASSERT_EQ(uiColumn, expected.uiColumn) << strDocument;
    ASSERT_EQ(toText(strErrorText), expected.strErrorText) << strDocument;
    if (!bParsed)
        return;
    ASSERT_TRUE(toNode(*parser.getRootElement()) == expected.root) << strDocument;
    for (const bool bFormat : {false, true}) {
        CString strSaved;
        ASSERT_TRUE(parser.getRootElement()->saveTo(strSaved, bFormat, false));
        ASSERT_EQ(toText(strSaved), writeXML(expected.root, bFormat)) << strDocument;
    }
}

// What was read and saved once is read and saved as the same again, though texts beside children are gone.
void expectStable(const std::wstring& strDocument, bool bFormat) {
    CXMLParser parser;
    if (!parser.parseFromString(toString(strDocument)))
        return;
    CString strFirst, strSecond;
    ASSERT_TRUE(parser.saveToString(strFirst, bFormat));
    ASSERT_TRUE(parser.parseFromString(strFirst)) << toText(strFirst);
    ASSERT_TRUE(parser.saveToString(strSecond, bFormat));
    ASSERT_EQ(toText(strFirst), toText(strSecond)) << strDocument;
}

constexpr unsigned int DOCUMENTS = 15000;

TEST(CXMLParserModel, ReadsAndWritesValidDocumentsAsTheReferenceDoes) {
    CDocumentMaker maker(20211);
    unsigned int uiParsed = 0;
    for (unsigned int i = 0; i < DOCUMENTS; ++i) {
        const std::wstring strDocument = maker.makeValid();
        ASSERT_NO_FATAL_FAILURE(expectSame(strDocument));
        ASSERT_NO_FATAL_FAILURE(expectStable(strDocument, i % 2 == 0));
        uiParsed += readXML(strDocument).bParsed;
    }
    EXPECT_GT(uiParsed, DOCUMENTS * 9 / 10) << "most of them are meant to be valid";
}

TEST(CXMLParserModel, RefusesBrokenDocumentsWhereTheReferenceDoes) {
    CDocumentMaker maker(531);
    unsigned int uiRefused = 0;
    for (unsigned int i = 0; i < DOCUMENTS * 3; ++i) {
        const std::wstring strDocument = maker.mutate(maker.makeValid());
        ASSERT_NO_FATAL_FAILURE(expectSame(strDocument));
        uiRefused += !readXML(strDocument).bParsed;
    }
    EXPECT_GT(uiRefused, DOCUMENTS) << "many of them are meant to be broken";
}

TEST(CXMLParserModel, ReadsEveryShortTextOfSyntaxCharactersAsTheReferenceDoes) {
    constexpr wchar_t aryAlphabet[] = L"<a>/=\"! ";
    for (unsigned int uiLength = 0, uiTexts = 1; uiLength < 6; ++uiLength, uiTexts *= 8) {
        for (unsigned int uiText = 0; uiText < uiTexts; ++uiText) {
            std::wstring strDocument = L"<a";
            for (unsigned int i = 0; i < uiLength; ++i)
                strDocument += aryAlphabet[uiText >> (3 * i) & 7];
            ASSERT_NO_FATAL_FAILURE(expectSame(strDocument));
        }
    }
}

TEST(CXMLParserModel, ReadsBytesAsItReadsTheCharactersThatTheyMake) {
    CDocumentMaker maker(77);
    for (unsigned int i = 0; i < DOCUMENTS; ++i) {
        const CString strText = toString(maker.makeValid());
        std::string strBytes(strText.length() * 3 + 1, '\0');
        auto* const pBytes = reinterpret_cast<unsigned char*>(&strBytes[0]);
        unsigned int uiBytes = 0;
        CStringConverter::convertToUTF8(strText, pBytes, static_cast<unsigned int>(strBytes.size()), &uiBytes);
        for (unsigned int uiLeft = maker.pick(4); uiLeft > 0 && uiBytes > 0; --uiLeft)
            pBytes[maker.pick(uiBytes)] =
                static_cast<unsigned char>(maker.pick(3) == 0 ? maker.pick(128) : 128 + maker.pick(128));

        CString strDecoded;
        CStringConverter::convertFromUTF8(pBytes, strDecoded);
        if (strDecoded.charAt(0) == 0xFEFF)
            continue;
        CXMLParser fromBytes, fromText;
        ASSERT_EQ(fromBytes.parseFromStream(pBytes), fromText.parseFromString(strDecoded)) << toText(strDecoded);
        unsigned int aryLine[2], aryColumn[2];
        CString aryText[2];
        fromBytes.getErrorPos(aryLine[0], aryColumn[0], aryText[0]);
        fromText.getErrorPos(aryLine[1], aryColumn[1], aryText[1]);
        ASSERT_EQ(aryLine[0], aryLine[1]) << toText(strDecoded);
        ASSERT_EQ(aryColumn[0], aryColumn[1]) << toText(strDecoded);
        ASSERT_EQ(toText(aryText[0]), toText(aryText[1])) << toText(strDecoded);
        ASSERT_EQ(fromBytes.getEncoding(), fromText.getEncoding());
        ASSERT_EQ(fromBytes.hasRootElement(), fromText.hasRootElement());
        if (fromText.hasRootElement()) {
            ASSERT_TRUE(toNode(*fromBytes.getRootElement()) == toNode(*fromText.getRootElement()));
        }
    }
}
} // namespace
