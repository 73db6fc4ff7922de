#include "formats/XMLReference.h"
#include "formats/XMLTreeAccess.h"
#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"
#include "support/TempFolder.h"

#include <Orlix/formats/CXMLElement.h>
#include <Orlix/formats/CXMLParser.h>
#include <Orlix/formats/IXMLParserListener.h>
#include <Orlix/foundation/CStringConverter.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

using namespace Orlix;
using namespace OrlixTest;

namespace {

const unsigned char* bytesOf(const std::string& strText) {
    return reinterpret_cast<const unsigned char*>(strText.c_str());
}

std::string repeat(const std::string& strPart, std::size_t uiCount) {
    std::string strText;
    strText.reserve(strPart.size() * uiCount);
    for (std::size_t i = 0; i < uiCount; ++i)
        strText += strPart;
    return strText;
}

/** Parses a copy that ends where the text ends, so that a sanitizer sees a read behind it. @return the error position
 *  as "line:column", "parsed" without one. */
std::string parseExactly(const std::string& strText) {
    const std::unique_ptr<unsigned char[]> pBytes(new unsigned char[strText.size() + 1]);
    std::memcpy(pBytes.get(), strText.c_str(), strText.size() + 1);
    CXMLParser parser;
    if (parser.parseFromStream(pBytes.get()))
        return "parsed";
    unsigned int uiLine = 0, uiColumn = 0;
    CString strError;
    parser.getErrorPos(uiLine, uiColumn, strError);
    return std::to_string(uiLine) + ":" + std::to_string(uiColumn);
}

const char WHOLE[] = "<?xml version='1.0' encoding='UTF-8'?>\n<a b='1' c= \"&lt;\">\n<!-- c -->text &amp;<!-- d --><e/>"
                     "<f g=\"\xC3\xA9\">\xE4\xB8\xAD</f><!-- g -->\n</a>";

TEST(CXMLParserHostile, EveryBeginningOfADocumentIsReadAsTheReferenceReadsIt) {
    const std::string strWhole(WHOLE);
    for (std::size_t uiLength = 0; uiLength <= strWhole.size(); ++uiLength) {
        const std::string strStart = strWhole.substr(0, uiLength);
        CString strWide;
        CStringConverter::convertFromUTF8(bytesOf(strStart), strWide);
        const tagXMLOutcome expected = readXML(toText(strWide));
        EXPECT_EQ(parseExactly(strStart),
                  expected.bParsed ? "parsed"
                                   : std::to_string(expected.uiLine) + ":" + std::to_string(expected.uiColumn))
            << strStart;
    }
    EXPECT_EQ(parseExactly(strWhole), "parsed");
}

TEST(CXMLParserHostile, EveryBeginningOfAUTF16FileIsReadAsItsTextIs) {
    const CTempFolder temp;
    std::string strWhole = "\xFF\xFE";
    for (const char* pText = WHOLE; *pText != 0; ++pText)
        strWhole += std::string(1, *pText) + (*pText < 0 ? '\xD8' : '\0'); // beyond ASCII lone surrogates
    for (std::size_t uiLength = 0; uiLength <= strWhole.size(); ++uiLength) {
        writeWhole(temp / "file", strWhole.substr(0, uiLength));
        CXMLParser fromFile, fromText;
        CString strText;
        EXPECT_EQ(CXMLParser::loadToString(toText(temp / "file"), strText), uiLength >= 4);
        EXPECT_EQ(strText.length(), uiLength < 4 ? 0 : uiLength / 2 - 1);
        EXPECT_EQ(fromFile.parseFromFile(toText(temp / "file")), fromText.parseFromString(strText)) << uiLength;
    }
}

TEST(CXMLParserHostile, LongNamesAreRefusedAtTheFirstCharacterTooMany) {
    for (const std::size_t uiLength : {255u, 1000u, 1000000u}) {
        const std::string strName(uiLength, 'n');
        EXPECT_EQ(parseExactly("<" + strName + "/>"), "1:256");
        EXPECT_EQ(parseExactly("<" + strName), "1:256");
        EXPECT_EQ(parseExactly("<a " + strName + "n='1'/>"), "1:259");
    }
}

TEST(CXMLParserHostile, DeepNestingIsRefusedAtLevel4097) {
    EXPECT_EQ(parseExactly(repeat("<a>", 4096) + repeat("</a>", 4096)), "parsed");
    for (const unsigned int uiLevels : {4097u, 1000000u}) {
        EXPECT_EQ(parseExactly(repeat("<a>", uiLevels) + repeat("</a>", uiLevels)), "1:12289");
        EXPECT_EQ(parseExactly(repeat("<a>", uiLevels)), "1:12289");
    }
}

TEST(CXMLParserHostile, AHundredThousandAttributesAreReadSortedAndSaved) {
    std::string strText = "<a";
    for (unsigned int i = 0; i < 100000; ++i)
        strText += " n" + std::to_string(100000 + i * 7919u % 100000) + "='" + std::to_string(i) + "'"; // all different
    CXMLParser parser;
    ASSERT_TRUE(parser.parseFromStream(bytesOf(strText + "/>")));
    EXPECT_EQ(parser.getRootElement()->getAttributeCount(), 100000u);
    EXPECT_TRUE(parser.getRootElement()->getAttributeNameByIndex(0) == L"n100000");
    EXPECT_TRUE(parser.getRootElement()->getAttributeNameByIndex(99999) == L"n199999");
    EXPECT_EQ(parser.getRootElement()->getAttributeInt(L"n107919", -1), 1);
    ASSERT_TRUE(parser.parseFromStream(bytesOf("<a" + repeat(" n='1'", 100000) + "/>")));
    EXPECT_EQ(parser.getRootElement()->getAttributeCount(), 1u);
}

TEST(CXMLParserHostile, AHundredMegabytesOfTextAreRead) {
    CXMLParser parser;
    ASSERT_TRUE(parser.parseFromStream(bytesOf("<a>" + std::string(100000000, 'x') + "</a>")));
    EXPECT_EQ(parser.getRootElement()->getText().length(), 100000000u);
    EXPECT_FALSE(parser.parseFromStream(bytesOf("<a>" + std::string(100000000, 'x'))));
    EXPECT_FALSE(parser.parseFromStream(bytesOf("<a b='" + std::string(100000000, '&'))));
}

TEST(CXMLParserHostile, WhatHasNoEndIsSearchedForOnce) {
    // Each would take hours if the search for an end began again at each start.
    EXPECT_EQ(parseExactly("<a>" + repeat("<!--", 3000000)), "1:5");
    EXPECT_EQ(parseExactly("<a><b/>" + repeat("<!-- -->", 2000000)), "1:17");
    EXPECT_EQ(parseExactly("<a>" + repeat("<b/><!-- -- ->", 500000)), "1:9");
    EXPECT_EQ(parseExactly("<a>" + repeat("<b/><!---->", 500000) + "</a>"), "parsed");
    EXPECT_EQ(parseExactly("<a b='" + repeat("&amp", 3000000)), "1:12000006");
    EXPECT_EQ(parseExactly("<a>" + repeat("&amp;&lt", 1000000) + "</a>"), "parsed");
    EXPECT_EQ(parseExactly("<a " + repeat("b=\"\"", 1000000)), "1:4000003");
    EXPECT_EQ(parseExactly(std::string(10000000, '\n')), "10000001:0");
    EXPECT_EQ(parseExactly(std::string(10000000, '<')), "1:2");
}

// The sanitizers have heaps of their own, which the limit would stop.
#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN)
/** Parses in a child that may not grow by more than the limit. */
bool parsesWithin(const std::string& strText, std::size_t uiLimit) {
    return runInChild([&] {
               CXMLParser parser;
               if (!limitMemory(uiLimit))
                   return 2;
               return parser.parseFromStream(bytesOf(strText)) ? 0 : 1;
           }).iExitCode == 0;
}

TEST(CXMLParserHostile, MemoryStaysWithin120BytesForEachByteOfInput) {
    std::string strAttributes = "<a>";
    for (unsigned int i = 0; i < 30000; ++i)
        strAttributes += "<b a='1'b='1'c='1'd='1'e='1'f='1'g='1'h='1'i='1'j='1'k='1'l='1'm='1'n='1'o='1'p='1'/>";
    for (const std::string& strText :
         {"<a>" + repeat("<b/>", 1000000) + "</a>", "<a>" + repeat("<b>x</b>", 500000) + "</a>",
          "<a>" + repeat("<b c=''/>", 500000) + "</a>", strAttributes + "</a>",
          "<a>" + std::string(4000000, 'x') + "</a>",
          "<a>" + repeat(repeat("<a>", 4000) + repeat("</a>", 4000), 150) + "</a>"})
        EXPECT_TRUE(parsesWithin(strText, strText.size() * 120)) << strText.substr(0, 20);
}

/** Takes what the heap has left for itself under a limit. */
void hoardMemory() {
    for (std::size_t uiSize = 64u << 20; uiSize >= 4096; uiSize /= 2) {
        void* volatile pTaken = nullptr;
        do {
            pTaken = std::malloc(uiSize);
        } while (pTaken);
    }
}

TEST(CXMLParserHostile, WithoutMemoryAParseAndASaveEndInOrder) {
    const std::string strText = "<a>" + repeat("<b c='1'><d>text</d></b>", 100000) + "</a>";
    for (const std::size_t uiLimit : {1000000u, 5000000u, 20000000u, 60000000u}) {
        const tagChildResult result = runInChild([&] {
            CXMLParser parser;
            CString strSaved(L"old");
            if (!limitMemory(uiLimit))
                return 2;
            const bool bParsed = parser.parseFromStream(bytesOf(strText));
            if (parser.hasRootElement() != bParsed)
                return 3;
            if (bParsed && parser.saveToString(strSaved, false) && strSaved.length() < 50)
                return 4;
            unlimitMemory();
            if (!parser.parseFromStream(bytesOf(strText)) || !limitMemory(0))
                return 5;
            strSaved.empty();
            hoardMemory();
            if (parser.saveToString(strSaved, false))
                return 6;
            unlimitMemory();
            return parser.saveToString(strSaved, false) && strSaved.length() > strText.size() ? 0 : 7;
        });
        EXPECT_EQ(result.iExitCode, 0) << uiLimit;
    }
}

struct tagCounter : IXMLParserListener {
    void onXMLDataChange() override { ++uiChanges; }
    unsigned int uiChanges = 0;
};

/** Leaves memory for some thousand elements, but for no array of as many. */
bool keepElementsOnly() {
    constexpr unsigned int ELEMENTS = 6000;
    CXMLElement spare;
    for (unsigned int i = 0; i < ELEMENTS; ++i)
        spare.addChild(L"c");
    spare.clearChildren();
    const bool bLimited = limitMemory(0);
    hoardMemory();
    return bLimited;
}

// A child that the array has no room for is no child, but whoever asked for it has it and is told so: on purpose.
TEST(CXMLParserHostile, AddChildHandsOutWhatTheArrayHasNoMemoryFor) {
    EXPECT_EQ(runInChild([] {
                  CXMLParser parser;
                  tagCounter counter;
                  CXMLElement* const pRoot = parser.addRootElement(L"r");
                  parser.setListener(&counter);
                  if (!keepElementsOnly())
                      return 2;
                  unsigned int uiAdded = 0;
                  CXMLElement* pChild = pRoot->addChild(L"c");
                  for (; pChild && pRoot->getChildAt(uiAdded) == pChild; ++uiAdded)
                      pChild = pRoot->addChild(L"c");
                  if (!pChild || uiAdded == 0)
                      return 3;
                  return counter.uiChanges == uiAdded + 1 && pChild->getLevel() == 1 ? 0 : 4;
              }).iExitCode,
              0);
}

TEST(CXMLParserHostile, AParseGoesOnWithoutTheChildrenThatTheArrayHasNoMemoryFor) {
    std::wstring strText = L"<r>";
    for (unsigned int i = 0; i < 100000; ++i)
        strText += L"<c/>";
    strText += L"</r>";
    EXPECT_EQ(runInChild([&] {
                  CXMLElement element;
                  if (!keepElementsOnly())
                      return 2;
                  if (!element.parseFrom(strText.c_str()))
                      return 3; // children that are dropped and not deleted use up what is left
                  return element.getChildAt(0) && !element.getChildAt(99999) ? 0 : 4;
              }).iExitCode,
              0);
}
#endif
} // namespace
