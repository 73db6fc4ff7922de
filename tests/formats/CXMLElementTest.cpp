#include <Orlix/formats/CXMLElement.h>

#include "formats/XMLTreeAccess.h"

#include <Orlix/formats/CXMLParser.h>
#include <Orlix/formats/IXMLParserListener.h>

#include <gtest/gtest.h>

#include <cwchar>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using namespace Orlix;
using namespace OrlixTest;

namespace {

static_assert(!std::is_copy_constructible_v<CXMLElement> && !std::is_copy_assignable_v<CXMLElement>);

template <class T, class = void> struct tagTakesValue : std::false_type {};
template <class T>
struct tagTakesValue<T, std::void_t<decltype(std::declval<CXMLElement&>().setAttribute(CString(), std::declval<T>()))>>
    : std::true_type {};
static_assert(tagTakesValue<const wchar_t*>::value && tagTakesValue<wchar_t*>::value && tagTakesValue<bool>::value);
static_assert(!tagTakesValue<const char*>::value, "a narrow literal must not become a bool");

struct tagCounter : IXMLParserListener {
    void onXMLDataChange() override { ++uiChanges; }
    unsigned int uiChanges = 0;
};

/** A document with a root "root", whose notices are counted from there on. */
class CXMLElementTest : public testing::Test {
protected:
    CXMLElementTest() {
        parser.create(CXMLParser::XML_ENCODING_UTF8);
        pRoot = parser.addRootElement(L"root");
        parser.setListener(&counter);
    }

    unsigned int takeChanges() {
        const unsigned int uiChanges = counter.uiChanges;
        counter.uiChanges = 0;
        return uiChanges;
    }

    std::wstring save(bool bFormat = false) { return saved(*pRoot, bFormat); }
    static std::wstring saved(CXMLElement& element, bool bFormat = false) {
        CString strText;
        return element.saveTo(strText, bFormat, false) ? toText(strText) : L"<not saved>";
    }

    tagCounter counter;
    CXMLParser parser;
    CXMLElement* pRoot;
};

/** Parses within a document, so that errors have somewhere to go. */
std::wstring parsed(const wchar_t* pText) {
    CXMLParser parser;
    CString strSaved;
    if (!parser.parseFromString(pText)) {
        unsigned int uiLine, uiColumn;
        CString strError;
        parser.getErrorPos(uiLine, uiColumn, strError);
        return L"error " + std::to_wstring(uiLine) + L":" + std::to_wstring(uiColumn);
    }
    return parser.getRootElement()->saveTo(strSaved, false, false) ? toText(strSaved) : L"<not saved>";
}

std::wstring repeat(wchar_t ch, std::size_t uiCount) { return std::wstring(uiCount, ch); }

TEST_F(CXMLElementTest, ConstructorsSetDocumentParentAndName) {
    CXMLElement plain;
    EXPECT_EQ(plain.getName().length(), 0u);
    EXPECT_EQ(plain.getLevel(), 0u);
    CXMLElement child(&parser, pRoot);
    EXPECT_EQ(child.getLevel(), 1u);
    EXPECT_EQ(child.getName().length(), 0u);
    CXMLElement named(&parser, &child, L"name");
    EXPECT_EQ(named.getLevel(), 2u);
    EXPECT_TRUE(named.getName() == L"name");
    EXPECT_FALSE(pRoot->hasChild(L"")) << "the parent is not told of a child made by itself";
    named.setText(L"x");
    EXPECT_EQ(takeChanges(), 1u);
    plain.setText(L"x");
    EXPECT_EQ(takeChanges(), 0u) << "no document to tell";
}

TEST_F(CXMLElementTest, SetNameIgnoresEmptyAndUnchanged) {
    pRoot->setName(L"");
    pRoot->setName(nullptr);
    pRoot->setName(L"root");
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_TRUE(pRoot->getName() == L"root");
    pRoot->setName(L"Root");
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_TRUE(pRoot->getName() == L"Root");
}

TEST_F(CXMLElementTest, SetTextIgnoresUnchangedAndTakesEmpty) {
    pRoot->setText(L"");
    EXPECT_EQ(takeChanges(), 0u) << "null and blank are the same text";
    pRoot->setText(L"text");
    pRoot->setText(L"text");
    EXPECT_EQ(takeChanges(), 1u);
    pRoot->setText(L"");
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_EQ(pRoot->getText().length(), 0u);
}

TEST_F(CXMLElementTest, AttributesAreReadByNameWithCase) {
    EXPECT_FALSE(pRoot->hasAttributes());
    EXPECT_EQ(pRoot->getAttributeCount(), 0u);
    pRoot->setAttribute(L"b", L"1");
    pRoot->setAttribute(L"B", L"2");
    EXPECT_TRUE(pRoot->hasAttributes());
    EXPECT_EQ(pRoot->getAttributeCount(), 2u);
    EXPECT_TRUE(pRoot->hasAttribute(L"b"));
    EXPECT_FALSE(pRoot->hasAttribute(L"c"));
    const CString strDefault(L"default");
    EXPECT_TRUE(pRoot->getAttributeString(L"B", strDefault) == L"2");
    EXPECT_EQ(&pRoot->getAttributeString(L"c", strDefault), &strDefault);
}

TEST_F(CXMLElementTest, AttributeNamesComeInAscendingOrder) {
    for (const wchar_t* const pName : {L"z", L"a", L"m"})
        pRoot->setAttribute(pName, L"1");
    EXPECT_TRUE(pRoot->getAttributeNameByIndex(0) == L"a");
    EXPECT_TRUE(pRoot->getAttributeNameByIndex(1) == L"m");
    EXPECT_TRUE(pRoot->getAttributeNameByIndex(2) == L"z");
    EXPECT_EQ(pRoot->getAttributeNameByIndex(3).length(), 0u);
    EXPECT_EQ(&pRoot->getAttributeNameByIndex(3), &pRoot->getAttributeNameByIndex(0xFFFFFFFF));
    pRoot->setAttribute(L"b", L"1");
    EXPECT_TRUE(pRoot->getAttributeNameByIndex(1) == L"b") << "an insertion begins a new walk";
    pRoot->deleteAttribute(L"a");
    EXPECT_TRUE(pRoot->getAttributeNameByIndex(0) == L"b");
    pRoot->parseAttribute(L"a='2'/>");
    EXPECT_TRUE(pRoot->getAttributeNameByIndex(0) == L"a") << "so does one by a parse";
    EXPECT_EQ(save(), L"<root a=\"2\" b=\"1\" m=\"1\" z=\"1\"/>");
}

TEST_F(CXMLElementTest, DefaultsAreForAbsentAttributesOnly) {
    pRoot->setAttribute(L"x", L"abc");
    EXPECT_EQ(pRoot->getAttributeInt(L"x", 7), 0);
    EXPECT_EQ(pRoot->getAttributeUInt(L"x", 7), 0u);
    EXPECT_EQ(pRoot->getAttributeLLong(L"x", 7), 0);
    EXPECT_EQ(pRoot->getAttributeFloat(L"x", 7.5f), 0.0f);
    EXPECT_FALSE(pRoot->getAttributeBool(L"x", true));
    EXPECT_EQ(pRoot->getAttributeInt(L"y", -7), -7);
    EXPECT_EQ(pRoot->getAttributeUInt(L"y", 4000000000u), 4000000000u);
    EXPECT_EQ(pRoot->getAttributeLLong(L"y", -5000000000), -5000000000);
    EXPECT_EQ(pRoot->getAttributeFloat(L"y", 7.5f), 7.5f);
    EXPECT_TRUE(pRoot->getAttributeBool(L"y", true));
}

TEST_F(CXMLElementTest, NumbersAreReadAsStringsReadThem) {
    pRoot->setAttribute(L"x", L"-12px");
    EXPECT_EQ(pRoot->getAttributeInt(L"x", 7), -12);
    EXPECT_EQ(pRoot->getAttributeLLong(L"x", 7), -12);
    EXPECT_EQ(pRoot->getAttributeUInt(L"x", 7), 0u);
    pRoot->setAttribute(L"x", L"0x1F");
    EXPECT_EQ(pRoot->getAttributeUInt(L"x", 7), 31u);
    EXPECT_EQ(pRoot->getAttributeInt(L"x", 7), 0);
    pRoot->setAttribute(L"x", L"2.5");
    EXPECT_EQ(pRoot->getAttributeFloat(L"x", 7), 2.5f);
    pRoot->setAttribute(L"x", L"true");
    EXPECT_TRUE(pRoot->getAttributeBool(L"x", false));
    for (const wchar_t* const pValue : {L"1", L"True", L"true ", L""}) {
        pRoot->setAttribute(L"x", pValue);
        EXPECT_FALSE(pRoot->getAttributeBool(L"x", true)) << pValue;
    }
}

TEST_F(CXMLElementTest, EachSetAttributeAddsReplacesAndIgnoresUnchanged) {
    pRoot->setAttribute(L"s", CString(L"a&b"));
    pRoot->setAttribute(L"w", L"c");
    pRoot->setAttribute(L"i", -3);
    pRoot->setAttribute(L"l", -5000000000L);
    pRoot->setAttribute(L"u", 4000000000u);
    pRoot->setAttribute(L"f", 1.5f);
    pRoot->setAttribute(L"b", true);
    EXPECT_EQ(takeChanges(), 7u);
    const std::wstring strFirst = L"<root b=\"true\" f=\"1.5000\" i=\"-3\" l=\"-5000000000\" s=\"a&amp;b\" "
                                  L"u=\"4000000000\" w=\"c\"/>";
    EXPECT_EQ(save(), strFirst);

    pRoot->setAttribute(L"s", CString(L"a&b"));
    pRoot->setAttribute(L"w", L"c");
    pRoot->setAttribute(L"i", -3);
    pRoot->setAttribute(L"l", -5000000000L);
    pRoot->setAttribute(L"u", 4000000000u);
    pRoot->setAttribute(L"f", 1.5f);
    pRoot->setAttribute(L"b", true);
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_EQ(save(), strFirst);

    pRoot->setAttribute(L"s", CString(L"A"));
    pRoot->setAttribute(L"w", L"C");
    pRoot->setAttribute(L"i", 3);
    pRoot->setAttribute(L"l", 5L);
    pRoot->setAttribute(L"u", 4u);
    pRoot->setAttribute(L"f", 2.0f);
    pRoot->setAttribute(L"b", false);
    EXPECT_EQ(takeChanges(), 7u);
    EXPECT_EQ(save(), L"<root b=\"false\" f=\"2.0000\" i=\"3\" l=\"5\" s=\"A\" u=\"4\" w=\"C\"/>");
}

TEST_F(CXMLElementTest, AnEqualNumberKeepsItsOldSpelling) {
    const struct {
        const wchar_t* pPresent;
        void (*fnSet)(CXMLElement&);
        const wchar_t* pExpected;
    } aryRow[] = {{L"010", [](CXMLElement& element) { element.setAttribute(L"x", 10); }, L"010"},
                  {L"abc", [](CXMLElement& element) { element.setAttribute(L"x", 0); }, L"abc"},
                  {L"7z", [](CXMLElement& element) { element.setAttribute(L"x", 7L); }, L"7z"},
                  {L"0x1F", [](CXMLElement& element) { element.setAttribute(L"x", 31u); }, L"0x1F"},
                  {L".5", [](CXMLElement& element) { element.setAttribute(L"x", 0.5f); }, L".5"},
                  {L".5", [](CXMLElement& element) { element.setAttribute(L"x", 0.50001f); }, L"0.5000"},
                  {L"no", [](CXMLElement& element) { element.setAttribute(L"x", false); }, L"no"},
                  {L"no", [](CXMLElement& element) { element.setAttribute(L"x", true); }, L"true"}};
    for (const auto& row : aryRow) {
        pRoot->setAttribute(L"x", row.pPresent);
        row.fnSet(*pRoot);
        EXPECT_TRUE(pRoot->getAttributeString(L"x", nullptr) == row.pExpected) << row.pPresent;
    }
}

TEST_F(CXMLElementTest, SetAttributeIgnoresAnEmptyName) {
    pRoot->setAttribute(L"", L"v");
    pRoot->setAttribute(nullptr, 1);
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_FALSE(pRoot->hasAttributes());
}

TEST_F(CXMLElementTest, ANullValueIsAnEmptyOne) {
    pRoot->setAttribute(L"x", static_cast<const wchar_t*>(nullptr));
    EXPECT_TRUE(pRoot->hasAttribute(L"x"));
    EXPECT_EQ(save(), L"<root x=\"\"/>");
    EXPECT_EQ(takeChanges(), 1u);
    pRoot->setAttribute(L"x", L"");
    EXPECT_EQ(takeChanges(), 0u);
}

TEST_F(CXMLElementTest, AttributesMayBeSetFromTheTreeItself) {
    ASSERT_TRUE(pRoot->parseFrom(L"<root a='one' b='two'/>"));
    pRoot->setAttribute(L"a", pRoot->getAttributeString(L"b", nullptr));
    pRoot->setAttribute(pRoot->getAttributeNameByIndex(1), pRoot->getAttributeString(L"a", nullptr).getBuffer() + 1);
    EXPECT_EQ(save(), L"<root a=\"two\" b=\"wo\"/>");
    pRoot->deleteAttribute(pRoot->getAttributeNameByIndex(0));
    EXPECT_EQ(save(), L"<root b=\"wo\"/>");
    pRoot->setText(pRoot->getName());
    pRoot->setName(pRoot->getAttributeNameByIndex(0));
    EXPECT_EQ(save(), L"<b b=\"wo\">root</b>");
}

TEST_F(CXMLElementTest, DeletingAttributesNotifiesOnlyIfThereWereAny) {
    pRoot->deleteAttribute(L"x");
    pRoot->clearAllAttributes();
    EXPECT_EQ(takeChanges(), 0u);
    pRoot->setAttribute(L"x", 1);
    pRoot->setAttribute(L"y", 1);
    pRoot->setAttribute(L"z", 1);
    takeChanges();
    pRoot->deleteAttribute(L"x");
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_EQ(pRoot->getAttributeCount(), 2u);
    pRoot->clearAllAttributes();
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_FALSE(pRoot->hasAttributes());
}

TEST_F(CXMLElementTest, GetAllAttributesReplacesTheMapByCopies) {
    pRoot->setAttribute(L"a", L"1");
    pRoot->setAttribute(L"b", L"2");
    takeChanges();
    CXMLElement::CAttributeMap mapCopy;
    mapCopy.addItem(L"old", new CString(L"gone"));
    pRoot->getAllAttributes(mapCopy);
    EXPECT_EQ(takeChanges(), 0u);
    ASSERT_EQ(mapCopy.getCount(), 2u);
    pRoot->clearAllAttributes();
    EXPECT_TRUE(*mapCopy.getItem(L"a") == L"1");
    EXPECT_TRUE(*mapCopy.getItem(L"b") == L"2");
}

TEST_F(CXMLElementTest, SetAllAttributesReplacesByCopiesAndAlwaysNotifies) {
    CXMLElement::CAttributeMap mapGiven;
    pRoot->setAllAttributes(mapGiven);
    EXPECT_EQ(takeChanges(), 1u) << "also if nothing was there and nothing comes";
    pRoot->setAttribute(L"old", L"gone");
    takeChanges();
    mapGiven.addItem(L"b", new CString(L"2"));
    mapGiven.addItem(L"a", nullptr);
    mapGiven.addItem(L"", new CString(L"nameless"));
    pRoot->setAllAttributes(mapGiven);
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_TRUE(*mapGiven.getItem(L"b") == L"2") << "the given map keeps its own";
    EXPECT_EQ(pRoot->getAttributeCount(), 3u);
    EXPECT_TRUE(pRoot->hasAttribute(L"a"));
    EXPECT_EQ(save(), L"<root a=\"\" b=\"2\"/>") << "a nameless attribute is not written";
}

TEST_F(CXMLElementTest, AddChildAppendsWithDocumentAndParent) {
    EXPECT_EQ(pRoot->addChild(L""), nullptr);
    EXPECT_EQ(takeChanges(), 0u);
    CXMLElement* const pFirst = pRoot->addChild(L"c");
    CXMLElement* const pSecond = pRoot->addChild(L"c");
    EXPECT_EQ(takeChanges(), 2u);
    EXPECT_EQ(pRoot->getSingleChild(L"c"), pFirst);
    EXPECT_EQ(pSecond->getLevel(), 1u);
    EXPECT_EQ(pSecond->addChild(L"d")->getLevel(), 2u);
    EXPECT_EQ(takeChanges(), 1u) << "the child tells the same document";
    EXPECT_EQ(save(), L"<root><c/><c><d/></c></root>");
}

TEST_F(CXMLElementTest, ChildrenAreFoundByExactName) {
    CXMLElement* const pA = pRoot->addChild(L"a");
    pRoot->addChild(L"b");
    CXMLElement* const pA2 = pRoot->addChild(L"a");
    EXPECT_TRUE(pRoot->hasChild(L"b"));
    EXPECT_FALSE(pRoot->hasChild(L"A"));
    EXPECT_EQ(pRoot->getSingleChild(L"A"), nullptr);
    EXPECT_EQ(pRoot->getSingleChild(L"a"), pA);
    EXPECT_EQ(pRoot->getSingleChild(L"a"), pA) << "each search begins at the first child";
    CDataArray<CXMLElement*> aryFound;
    aryFound.add(nullptr);
    pRoot->getChildren(L"a", aryFound);
    ASSERT_EQ(aryFound.getSize(), 3u) << "found ones are added to what was there";
    EXPECT_EQ(aryFound[1], pA);
    EXPECT_EQ(aryFound[2], pA2);
    pRoot->getChildren(L"none", aryFound);
    EXPECT_EQ(aryFound.getSize(), 3u);
}

TEST_F(CXMLElementTest, DeleteChildByIndexKeepsTheOrder) {
    for (const wchar_t* const pName : {L"a", L"b", L"c"})
        pRoot->addChild(pName);
    takeChanges();
    EXPECT_FALSE(pRoot->deleteChild(3u));
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_TRUE(pRoot->deleteChild(1u));
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_EQ(save(), L"<root><a/><c/></root>");
}

TEST_F(CXMLElementTest, DeleteChildByPointerIsTrueAndNotifiesAlsoForAStranger) {
    // Meant, unlike the form with an index: what was asked for, that it be no child, holds.
    CXMLElement stranger;
    EXPECT_TRUE(pRoot->deleteChild(&stranger));
    EXPECT_TRUE(pRoot->deleteChild(static_cast<CXMLElement*>(nullptr)));
    EXPECT_EQ(takeChanges(), 2u);
    CXMLElement* const pChild = pRoot->addChild(L"a");
    pRoot->addChild(L"b");
    takeChanges();
    EXPECT_TRUE(pRoot->deleteChild(pChild));
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_EQ(save(), L"<root><b/></root>");
}

TEST_F(CXMLElementTest, DeleteChildrenTakesAllOfOneNameWithOneNotice) {
    for (const wchar_t* const pName : {L"a", L"b", L"a", L"a"})
        pRoot->addChild(pName);
    takeChanges();
    EXPECT_FALSE(pRoot->deleteChildren(L"none"));
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_TRUE(pRoot->deleteChildren(pRoot->getSingleChild(L"a")->getName())) << "the name goes with the children";
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_EQ(save(), L"<root><b/></root>");
}

TEST_F(CXMLElementTest, ClearChildrenNotifiesOnlyIfThereWereAny) {
    pRoot->clearChildren();
    EXPECT_EQ(takeChanges(), 0u);
    pRoot->addChild(L"a")->addChild(L"b");
    takeChanges();
    pRoot->clearChildren();
    EXPECT_EQ(takeChanges(), 1u);
    EXPECT_EQ(save(), L"<root/>");
}

TEST_F(CXMLElementTest, ParseFromDropsAttributesAndChildrenAndKeepsNameAndTextWithoutNotice) {
    pRoot->setText(L"old text");
    pRoot->setAttribute(L"old", 1);
    pRoot->addChild(L"old");
    takeChanges();
    EXPECT_TRUE(pRoot->parseFrom(L"<new a='1'/>"));
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_TRUE(pRoot->getName() == L"new");
    EXPECT_TRUE(pRoot->getText() == L"old text") << "only a text in the source takes its place";
    EXPECT_EQ(save(), L"<new a=\"1\">old text</new>");
    EXPECT_FALSE(pRoot->parseFrom(L"?"));
    EXPECT_FALSE(pRoot->hasAttributes()) << "gone before the first character is looked at";
    EXPECT_TRUE(pRoot->getName() == L"new");
    EXPECT_FALSE(pRoot->parseFrom(nullptr));
}

TEST_F(CXMLElementTest, ParseOperationsGiveThePositionBehindWhatTheyRead) {
    const wchar_t* const pData = L" <a b='1'>t</a>rest";
    EXPECT_EQ(pRoot->parseData(pData), pData + 15);
    const wchar_t* const pName = L"_x-1.y:z rest";
    EXPECT_EQ(pRoot->parseName(pName), pName + 8);
    EXPECT_TRUE(pRoot->getName() == L"_x-1.y:z");
    const wchar_t* const pText = L" \n t&lt; <b";
    EXPECT_EQ(pRoot->parseText(pText), pText + 9);
    EXPECT_TRUE(pRoot->getText() == L"t< ");
    const wchar_t* const pAttribute = L" 1='x' />";
    EXPECT_EQ(pRoot->parseAttribute(pAttribute), pAttribute + 7);
    EXPECT_TRUE(pRoot->getAttributeString(L"1", nullptr) == L"x");
    const wchar_t* const pEnds = L"n='1'";
    EXPECT_EQ(pRoot->parseAttribute(pEnds), pEnds + 5) << "the end of the text behind a value is no error here";
}

TEST_F(CXMLElementTest, ParseOperationsOfNullAndEmptyTextsReportNothing) {
    const wchar_t* const pEmpty = L"";
    EXPECT_EQ(pRoot->parseData(nullptr), nullptr);
    EXPECT_EQ(pRoot->parseName(nullptr), nullptr);
    EXPECT_EQ(pRoot->parseName(pEmpty), nullptr);
    EXPECT_EQ(pRoot->parseText(nullptr), nullptr);
    EXPECT_EQ(pRoot->parseText(pEmpty), pEmpty);
    EXPECT_EQ(pRoot->parseAttribute(nullptr), nullptr);
    EXPECT_EQ(pRoot->parseAttribute(pEmpty), pEmpty);
    unsigned int uiLine = 9, uiColumn = 9;
    CString strText;
    parser.getErrorPos(uiLine, uiColumn, strText);
    EXPECT_EQ(uiLine, 0u);
    EXPECT_EQ(uiColumn, 0u);
    EXPECT_TRUE(pRoot->getName() == L"root");
    pRoot->setText(L"text");
    const wchar_t* const pBlanks = L"  <b>";
    EXPECT_EQ(pRoot->parseText(pBlanks), pBlanks + 2);
    EXPECT_TRUE(pRoot->getText() == L"text") << "blanks alone are no text";
}

TEST_F(CXMLElementTest, AReportOutsideAParseOfTheDocumentHasNoText) {
    EXPECT_FALSE(pRoot->parseFrom(L"\n\n<a><1>"));
    unsigned int uiLine = 9, uiColumn = 9;
    CString strText(L"old");
    parser.getErrorPos(uiLine, uiColumn, strText);
    EXPECT_EQ(uiLine, 1u);
    EXPECT_EQ(uiColumn, 0u);
    EXPECT_EQ(strText.length(), 0u);
}

TEST(CXMLElementParse, AnElementWithoutDocumentSwallowsASyntaxError) {
    CXMLElement element;
    EXPECT_FALSE(element.parseFrom(L"<a b></a>"));
    EXPECT_TRUE(element.parseFrom(L"<a b='1'><c/></a>"));
    EXPECT_FALSE(element.parseFrom(L"<a b='1'><c></a>"));
}

TEST(CXMLElementParse, ReadsTheDialect) {
    const struct {
        const wchar_t* pText;
        const wchar_t* pSaved;
    } aryRow[] = {
        {L"<a/>", L"<a/>"},
        {L"<a></a>", L"<a/>"},
        {L"<a ></a>", L"<a/>"},
        {L"<a />", L"<a/>"},
        {L"\t\r\n <a/>", L"<a/>"},
        {L"<_a-1.b:c/>", L"<_a-1.b:c/>"},
        {L"<a b='1\"/>", L"<a b=\"1\"/>"},                 // either quote closes
        {L"<a b=\"1\"c=\"2\"/>", L"<a b=\"1\" c=\"2\"/>"}, // no separator
        {L"<a b= \t'1'/>", L"<a b=\"1\"/>"},               // blanks behind the equals sign
        {L"<a b/\"1\"/>", L"<a b=\"1\"/>"},                // any stop character passes
        {L"<a b>\"1\"/>", L"<a b=\"1\"/>"},
        {L"<a x=\"1\" x=\"2\"/>", L"<a x=\"1\"/>"},                   // the first one stays
        {L"<a z='1' a='2' m='3'/>", L"<a a=\"2\" m=\"3\" z=\"1\"/>"}, // order of names
        {L"<a b=''/>", L"<a b=\"\"/>"},
        {L"<a 1='x' -='y'/>", L"<a -=\"y\" 1=\"x\"/>"}, // an attribute may begin like this
        {L"<a b='<>\n\t'/>", L"<a b=\"&lt;&gt;&lf;\t\"/>"},
        {L"<a>  text  </a>", L"<a>text  </a>"}, // blanks before it go, behind it stay
        {L"<a>&cr;&lf;&#65;&unknown;</a>", L"<a>&cr;&lf;&amp;#65;&amp;unknown;</a>"},
        {L"<a>a > b & c \" '</a>", L"<a>a &gt; b &amp; c &quot; &apos;</a>"},
        {L"<a>text<b/></a>", L"<a><b/></a>"}, // a text beside children is not written
        {L"<a><b/><c/></a>", L"<a><b/><c/></a>"},
        {L"<a> <b> </b>\n</a> ", L"<a><b/></a>"},
        {L"<a><b/></a><not looked at", L"<a><b/></a>"},
        {L"<a><!--x--></a>", L"<a/>"},
        {L"<a><!--x--><!--y--><b/></a>", L"<a><b/></a>"}, // the only place for two
        {L"<a><!--x-->text<!--y--></a>", L"<a>text</a>"},
        {L"<a>text<!--y--><b/><!--z--><b/><!--z--></a>", L"<a><b/><b/></a>"},
        {L"<a><!-- <b> -- > - --></a>", L"<a/>"},
        {L"<a><!----></a>", L"<a/>"},
        {L"<a><!-->--></a>", L"<a/>"}, // the end is looked for behind the start
        {L"<a><!--->--></a>", L"<a/>"},
    };
    for (const auto& row : aryRow)
        EXPECT_EQ(parsed(row.pText), row.pSaved) << row.pText;
}

TEST(CXMLElementParse, ReportsWhereTheDialectIsBroken) {
    const struct {
        const wchar_t* pText;
        const wchar_t* pError;
    } aryRow[] = {
        {L"text", L"error 1:1"},
        {L"  text", L"error 1:3"},
        {L"<", L"error 0:0"},       // silent
        {L"<a><", L"error 0:0"},    // silent, by the child
        {L"<a>text", L"error 0:0"}, // silent, at the head of the children
        {L"< a/>", L"error 1:2"},
        {L"<1/>", L"error 1:2"},
        {L"<\x00e9/>", L"error 1:2"},
        {L"<a\x00e9/>", L"error 1:3"},
        {L"<a", L"error 1:2"}, // at the end the column is that of the last character
        {L"<a ", L"error 1:3"},
        {L"<a b", L"error 1:4"},
        {L"<a b=", L"error 1:5"},
        {L"<a b='", L"error 1:6"},
        {L"<a b='1", L"error 1:7"},
        {L"<a b='1'", L"error 1:8"},
        {L"<a b='1' ", L"error 1:9"},
        {L"<a b ='1'/>", L"error 1:5"}, // no blank before the equals sign
        {L"<a b=1/>", L"error 1:6"},
        {L"<a ='1'/>", L"error 1:4"},
        {L"<a b/>", L"error 1:6"}, // "/" is taken for the equals sign, ">" for the quote
        {L"<a /", L"error 1:4"},
        {L"<a / >", L"error 1:4"},
        {L"<a>", L"error 1:3"},
        {L"<a> \n", L"error 2:0"},
        {L"<a><b/>", L"error 1:7"},
        {L"<a><b/>tail</a>", L"error 1:8"}, // text behind a child
        {L"<a>text<!--c-->more</a>", L"error 1:16"},
        {L"<a></a >", L"error 1:5"}, // taken as a child
        {L"<a></ a>", L"error 1:5"},
        {L"<a></b>", L"error 1:5"},
        {L"<a></ab>", L"error 1:5"},
        {L"<ab></a>", L"error 1:6"},
        {L"<a></A>", L"error 1:5"},
        {L"<!--c--><a/>", L"error 1:2"}, // no comment before the root
        {L"<a><b/><!--x--><!--y--><c/></a>", L"error 1:17"},
        {L"<a><!--x--><!--y--><!--z--></a>", L"error 1:21"},
        {L"<a><!-- </a>", L"error 1:5"}, // a comment without an end
        {L"<a><!--></a>", L"error 1:5"},
        {L"<a><!--x--", L"error 1:5"},
        {L"<a><!--x-->", L"error 1:11"},
        {L"<a>text<!--x-->", L"error 1:15"},
        {L"<a><![CDATA[x]]></a>", L"error 1:5"},
        {L"<a><?pi?></a>", L"error 1:5"},
        {L"<!DOCTYPE a><a/>", L"error 1:2"},
    };
    for (const auto& row : aryRow)
        EXPECT_EQ(parsed(row.pText), row.pError) << row.pText;
}

TEST(CXMLElementParse, TextBesideChildrenStaysReadable) {
    CXMLElement element;
    ASSERT_TRUE(element.parseFrom(L"<a>  hello  <b/></a>"));
    EXPECT_TRUE(element.getText() == L"hello  ");
    EXPECT_TRUE(element.hasChild(L"b"));
}

TEST(CXMLElementParse, AnEmptyValueIsANullString) {
    CXMLElement element;
    ASSERT_TRUE(element.parseFrom(L"<a b=''/>"));
    EXPECT_TRUE(element.getAttributeString(L"b", L"default").isEmpty());
}

TEST(CXMLElementParse, NamesHaveALongestLength) {
    const std::wstring strLongest = L"<" + repeat(L'n', 254) + L"></" + repeat(L'n', 254) + L">";
    EXPECT_EQ(parsed(strLongest.c_str()), L"<" + repeat(L'n', 254) + L"/>");
    for (const std::size_t uiLength : {255u, 256u, 1000u, 1000000u})
        EXPECT_EQ(parsed((L"<" + repeat(L'n', uiLength) + L"/>").c_str()), L"error 1:256") << uiLength;
    const std::wstring strAttribute = L"<a " + repeat(L'n', 255) + L"='1'/>";
    EXPECT_EQ(parsed(strAttribute.c_str()), L"<a " + repeat(L'n', 255) + L"=\"1\"/>");
    for (const std::size_t uiLength : {256u, 257u, 1000u, 1000000u})
        EXPECT_EQ(parsed((L"<a " + repeat(L'n', uiLength) + L"='1'/>").c_str()), L"error 1:259") << uiLength;
}

std::wstring nest(unsigned int uiLevels) {
    std::wstring strText;
    for (unsigned int i = 0; i < uiLevels; ++i)
        strText += L"<a>";
    for (unsigned int i = 0; i < uiLevels; ++i)
        strText += L"</a>";
    return strText;
}

TEST(CXMLElementParse, NestingEndsAt4096LevelsOfOneCall) {
    EXPECT_NE(parsed(nest(4096).c_str()).substr(0, 5), L"error");
    const std::wstring strFirst = std::to_wstring(4096 * 3 + 1);
    EXPECT_EQ(parsed(nest(4097).c_str()), L"error 1:" + strFirst) << "at the \"<\" of the level too deep";
    EXPECT_EQ(parsed(nest(1000000).c_str()), L"error 1:" + strFirst);

    CXMLParser parser;
    ASSERT_TRUE(parser.parseFromString(L"<root><inner/></root>"));
    EXPECT_TRUE(parser.getRootElement()->getSingleChild(L"inner")->parseFrom(nest(4096).c_str()))
        << "each call counts from 1";
}

TEST_F(CXMLElementTest, SaveWritesOneLinePerTagWhenFormatted) {
    ASSERT_TRUE(pRoot->parseFrom(L"<root z='1' a=''>lost<b><c>text&lf;</c></b><d x='\"/></root>"));
    EXPECT_EQ(save(true), L"<root a=\"\" z=\"1\">\n\t<b>\n\t\t<c>text&lf;</c>\n\t</b>\n\t<d x=\"\"/>\n</root>\n");
    EXPECT_EQ(save(false), L"<root a=\"\" z=\"1\"><b><c>text&lf;</c></b><d x=\"\"/></root>");
    EXPECT_EQ(saved(*pRoot->getSingleChild(L"b"), true), L"\t<b>\n\t\t<c>text&lf;</c>\n\t</b>\n")
        << "the indent is that of the level in the whole tree";
}

TEST_F(CXMLElementTest, SaveReplacesOrAppends) {
    CString strText(L"old");
    EXPECT_TRUE(pRoot->saveTo(strText, false, false));
    EXPECT_TRUE(strText == L"<root/>");
    EXPECT_TRUE(pRoot->saveTo(strText, true, true));
    EXPECT_TRUE(strText == L"<root/><root/>\n");
    CString strNull;
    EXPECT_TRUE(pRoot->saveTo(strNull, false, true));
    EXPECT_TRUE(strNull == L"<root/>");
}

TEST_F(CXMLElementTest, SaveWithoutANameWritesNothing) {
    CXMLElement nameless;
    nameless.addChild(L"child");
    CString strText(L"old");
    EXPECT_FALSE(nameless.saveTo(strText, true, false));
    EXPECT_FALSE(nameless.saveTo(strText, true, true));
    EXPECT_TRUE(strText == L"old");
    CXMLElement unnamed;
    unnamed.cloneTo(pRoot->addChild(L"soon nameless"));
    EXPECT_EQ(save(true), L"<root>\n</root>\n") << "a child without a name counts, but writes nothing";
}

TEST_F(CXMLElementTest, SavedValuesOfAnyLengthAreComplete) {
    const std::wstring strLong = repeat(L'v', 1000000) + L"&";
    pRoot->setAttribute(L"a", strLong.c_str());
    pRoot->addChild(L"b")->setText(strLong.c_str());
    const std::wstring strEncoded = strLong + L"amp;";
    EXPECT_EQ(save(), L"<root a=\"" + strEncoded + L"\"><b>" + strEncoded + L"</b></root>");
}

TEST_F(CXMLElementTest, ALongTextOfEntitiesIsSavedWhole) {
    pRoot->setText(repeat(L'&', 1000000).c_str());
    const std::wstring strSaved = save();
    ASSERT_EQ(strSaved.size(), 5000013u);
    EXPECT_EQ(strSaved.substr(0, 16), L"<root>&amp;&amp;");
    EXPECT_EQ(strSaved.substr(5000001), L"&amp;</root>");
}

TEST_F(CXMLElementTest, SavedTextsEndAtAZeroInside) {
    CString strZero;
    strZero.append(L"ab", 5);
    ASSERT_EQ(strZero.length(), 5u);
    pRoot->setAttribute(L"x", strZero);
    pRoot->addChild(L"c")->setText(strZero);
    EXPECT_EQ(save(), L"<root x=\"ab\"><c>ab</c></root>");
}

TEST_F(CXMLElementTest, ACloneIsAWholeCopyWithoutDocumentAndParent) {
    const wchar_t* const pText = L"<root a='1'>t<b x='2'><c>deep</c></b></root>";
    ASSERT_TRUE(pRoot->parseFrom(pText));
    const std::unique_ptr<CXMLElement> pClone(pRoot->clone());
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_TRUE(toNode(*pClone) == toNode(*pRoot));
    CXMLElement* const pDeep = pClone->getSingleChild(L"b")->getSingleChild(L"c");
    EXPECT_EQ(pDeep->getLevel(), 0u) << "no parents, all the way down, by design";
    EXPECT_EQ(saved(*pClone, true), L"<root a=\"1\">\n<b x=\"2\">\n<c>deep</c>\n</b>\n</root>\n") << "and so no indent";
    pDeep->setText(L"new");
    pClone->addChild(L"d");
    EXPECT_EQ(takeChanges(), 0u) << "nobody is told";
    EXPECT_EQ(pClone->getSingleChild(L"d")->getLevel(), 1u) << "a child added later has its parent";
    EXPECT_EQ(saved(*pClone, true), L"<root a=\"1\">\n<b x=\"2\">\n<c>new</c>\n</b>\n\t<d/>\n</root>\n");
    EXPECT_EQ(save(), L"<root a=\"1\"><b x=\"2\"><c>deep</c></b></root>") << "the original is another tree";
}

TEST_F(CXMLElementTest, CloneToReplacesTheContentWithoutNotice) {
    CXMLElement source;
    ASSERT_TRUE(source.parseFrom(L"<new b='1'>text<c/></new>"));
    CXMLElement* const pTarget = pRoot->addChild(L"target");
    pTarget->setAttribute(L"old", 1);
    pTarget->addChild(L"old");
    takeChanges();
    source.cloneTo(pTarget);
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_EQ(save(), L"<root><new b=\"1\"><c/></new></root>");
    EXPECT_TRUE(pTarget->getText() == L"text");
    EXPECT_EQ(pTarget->getLevel(), 1u) << "the target stays where it is";
    pTarget->setText(L"told");
    EXPECT_EQ(takeChanges(), 1u);
    pTarget->getSingleChild(L"c")->setText(L"not told");
    EXPECT_EQ(takeChanges(), 0u);
    EXPECT_EQ(saved(source), L"<new b=\"1\"><c/></new>");
}

TEST_F(CXMLElementTest, CloneToWorksAmongRelativesAndIgnoresItselfAndNull) {
    const wchar_t* const pText = L"<root a='1'><b><c x='2'/></b></root>";
    ASSERT_TRUE(pRoot->parseFrom(pText));
    pRoot->cloneTo(pRoot);
    pRoot->cloneTo(nullptr);
    EXPECT_EQ(pRoot->getSingleChild(L"b")->getLevel(), 1u) << "the children are the same ones, with their parent";
    EXPECT_EQ(save(), L"<root a=\"1\"><b><c x=\"2\"/></b></root>");
    pRoot->cloneTo(pRoot->getSingleChild(L"b"));
    EXPECT_EQ(save(), L"<root a=\"1\"><root a=\"1\"><b><c x=\"2\"/></b></root></root>");
    pRoot->getSingleChild(L"root")->getSingleChild(L"b")->cloneTo(pRoot);
    EXPECT_EQ(save(), L"<b><c x=\"2\"/></b>");
}
} // namespace
