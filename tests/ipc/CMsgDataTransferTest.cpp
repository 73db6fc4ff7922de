#include "ipc/DataTransferFixture.h"

#include <Orlix/formats/CXMLElement.h>

#include <cstdint>
#include <memory>
#include <type_traits>

using namespace Orlix;
using namespace OrlixTest;

namespace {

static_assert(std::is_base_of<CBaseMessage, CMsgDataTransfer>::value, "");

class COpenMessage : public CMsgDataTransfer {
public:
    using CMsgDataTransfer::CMsgDataTransfer;
    using CMsgDataTransfer::m_aryData;
    using CMsgDataTransfer::m_bConnected;
    using CMsgDataTransfer::m_bState;
    using CMsgDataTransfer::m_parser;
    using CMsgDataTransfer::m_pOwner;
};

const std::string TOUCH = "<root><touch_input id=\"7\"/></root>";
const std::string PAGE = "<root><page_cmd ope_handle=\"3\" page_name=\"p\"/></root>";
const std::string POPUP = "<root><popup_cmd ope_handle=\"3\" popup_name=\"p\"/></root>";

const std::string TOUCH_7 = "touch 7 at 0,0 delta 0,0 speed 0,0 status 0 time 0 distance 0";
const std::string HEADER = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

unsigned int idOf(const CDataTransfer* pOwner) {
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(pOwner));
}

class CMsgDataTransferTest : public CDataTransferFixture {
protected:
    COpenTransfer m_transfer{&m_listener};

    /** A message with a text as its payload, zero byte included. */
    std::unique_ptr<COpenMessage> makeText(const std::string& strText) { return makePayload(strText + '\0', true); }
    std::unique_ptr<COpenMessage> makePayload(const std::string& strBytes, bool bXML) {
        return std::unique_ptr<COpenMessage>(
            new COpenMessage(&m_transfer, bytesOf(strBytes), static_cast<unsigned int>(strBytes.size()), bXML));
    }
    /** What the listener hears of a document. */
    VecCall hear(const std::string& strText) {
        m_listener.m_vecCall.clear();
        makeText(strText)->handleMessage();
        return m_listener.m_vecCall;
    }
};

TEST_F(CMsgDataTransferTest, ConnectionFormKeepsTheState) {
    for (const bool bConnected : {true, false}) {
        COpenMessage message(&m_transfer, bConnected);
        EXPECT_EQ(message.getType(), CBaseMessage::MESSAGE_DATA_TRANSFER);
        EXPECT_EQ(message.getID(), idOf(&m_transfer));
        EXPECT_EQ(message.m_pOwner, &m_transfer);
        EXPECT_TRUE(message.m_bState);
        EXPECT_EQ(message.m_bConnected, bConnected);
        EXPECT_TRUE(message.m_aryData.isEmpty());
        EXPECT_FALSE(message.m_parser.hasRootElement());
        message.handleMessage();
    }
    EXPECT_EQ(m_listener.m_vecCall, (VecCall{"connect", "disconnect"}));
}

TEST_F(CMsgDataTransferTest, BlockIsCopiedOnceAndMovesToTheListener) {
    std::string strBytes("ab\0c", 4);
    const auto pMessage = makePayload(strBytes, false);
    EXPECT_EQ(pMessage->getType(), CBaseMessage::MESSAGE_DATA_TRANSFER);
    EXPECT_EQ(pMessage->getID(), idOf(&m_transfer));
    EXPECT_FALSE(pMessage->m_bState);
    const unsigned char* const pCopy = pMessage->m_aryData.getArray();
    ASSERT_NE(pCopy, bytesOf(strBytes));
    strBytes.assign(4, 'x');

    class CKeeper : public IDataTransferListener {
    public:
        using IDataTransferListener::onLogicDataAvailable;
        void onLogicDataAvailable(CArrayPtr<unsigned char> aryData) override { m_aryKept = aryData; }
        CArrayPtr<unsigned char> m_aryKept;
    } keeper;
    m_transfer.setListener(&keeper);
    pMessage->handleMessage();
    EXPECT_EQ(keeper.m_aryKept.getArray(), pCopy) << "moved, not copied";
    EXPECT_EQ(std::string(pCopy, pCopy + keeper.m_aryKept.getSize()), std::string("ab\0c", 4));
    EXPECT_TRUE(pMessage->m_aryData.isEmpty());
    pMessage->handleMessage();
    EXPECT_EQ(keeper.m_aryKept.getArray(), pCopy) << "there is nothing to deliver a second time";
}

TEST_F(CMsgDataTransferTest, PayloadOfNoLengthCarriesNothing) {
    for (const bool bXML : {true, false}) {
        COpenMessage message(&m_transfer, nullptr, 0, bXML);
        EXPECT_EQ(message.getType(), CBaseMessage::MESSAGE_DATA_TRANSFER);
        EXPECT_TRUE(message.m_aryData.isEmpty());
        EXPECT_FALSE(message.m_bState);
        message.handleMessage();
    }
    EXPECT_EQ(m_listener.m_vecCall, VecCall{});
}

TEST_F(CMsgDataTransferTest, BuiltInDocumentsAreInputAndTheRestIsData) {
    const struct {
        std::string strText;
        CBaseMessage::EMessageType eType;
    } aryRow[] = {
        {TOUCH, CBaseMessage::MESSAGE_TOUCH},
        {PAGE, CBaseMessage::MESSAGE_TOUCH},
        {POPUP, CBaseMessage::MESSAGE_TOUCH},
        {"<any><b/><popup_cmd/></any>", CBaseMessage::MESSAGE_TOUCH},
        {"<root><b/></root>", CBaseMessage::MESSAGE_DATA_TRANSFER},
        {"<root/>", CBaseMessage::MESSAGE_DATA_TRANSFER},
        {"<touch_input id=\"7\"/>", CBaseMessage::MESSAGE_DATA_TRANSFER},
        {"<root><b><touch_input/></b></root>", CBaseMessage::MESSAGE_DATA_TRANSFER},
        {"<root><Touch_Input/></root>", CBaseMessage::MESSAGE_DATA_TRANSFER},
        {"<root><touch_input/>", CBaseMessage::MESSAGE_DATA_TRANSFER},
        {"no document", CBaseMessage::MESSAGE_DATA_TRANSFER},
        {"", CBaseMessage::MESSAGE_DATA_TRANSFER},
    };
    for (const auto& row : aryRow) {
        const auto pMessage = makeText(row.strText);
        EXPECT_EQ(pMessage->getType(), row.eType) << row.strText;
        EXPECT_EQ(pMessage->getID(), idOf(&m_transfer)) << row.strText;
        EXPECT_FALSE(pMessage->m_bState) << row.strText;
    }
}

TEST_F(CMsgDataTransferTest, DocumentsReachTheirOperation) {
    const struct {
        std::string strText;
        VecCall vecCall;
    } aryRow[] = {
        {"<root><touch_input id=\"4294967295\" x=\"-1\" x_delta=\"2\" x_speed=\"-3\" y=\"4\" y_delta=\"-5\" "
         "y_speed=\"6\" "
         "touch_status=\"3\" time_stamp=\"4000000000\"/></root>",
         {"touch 4294967295 at -1,4 delta 2,-5 speed -3,6 status 3 time 4000000000 distance 0"}},
        {TOUCH, {TOUCH_7}},
        {"<root><touch_input id=\"0x10\" time_stamp=\"-1\"/></root>", // read unsigned
         {"touch 16 at 0,0 delta 0,0 speed 0,0 status 0 time 0 distance 0"}},
        {"<root><touch_input x=\"none\" distance=\"9\" touch_status=\"-1\"/></root>",
         {"touch 0 at 0,0 delta 0,0 speed 0,0 status 4294967295 time 0 distance 0"}},
        {PAGE, {"page 3 p"}},
        {"<any><page_cmd ope_handle=\"-2147483648\"/></any>", {"page -2147483648 "}},
        {"<root><page_cmd page_name=\"\"/></root>", {"page 0 "}},
        {"<root><page_cmd popup_name=\"p\"/></root>", {"page 0 "}},
        {"<root><page_cmd ope_handle=\"3\"/><touch_input id=\"7\"/></root>", {TOUCH_7}},
        {"<root><popup_cmd/><page_cmd ope_handle=\"3\" page_name=\"p\"/></root>", {"page 3 p"}},
        {"<root><touch_input id=\"7\"/><touch_input id=\"8\"/></root>", {TOUCH_7}},
        {"<other><b/></other>", {"document " + HEADER + "<other><b/></other>"}},
        {"<touch_input id=\"7\"/>", {"document " + HEADER + "<touch_input id=\"7\"/>"}},
        {"<root><touch_input/>", {}},
        {"no document", {}},
        {"", {}},
        {"\xEF\xBB\xBF<a/>", {}}, // no mark is expected in front of a text that never was a file
    };
    for (const auto& row : aryRow)
        EXPECT_EQ(hear(row.strText), row.vecCall) << row.strText;
}

// The sender writes the name under "page_name", the receiver looks for "popup_name" on the page command's element,
// which is not there: such a document has never reached a listener, and hosts rely on that.
TEST_F(CMsgDataTransferTest, PopupCommandsAreDroppedInSilence) {
    EXPECT_EQ(hear(POPUP), VecCall{});
    EXPECT_EQ(hear("<root><popup_cmd ope_handle=\"3\" page_name=\"p\"/></root>"), VecCall{});
    EXPECT_EQ(hear("<root><b/><popup_cmd/></root>"), VecCall{});
    EXPECT_EQ(m_recorder.getLines(), std::vector<std::wstring>{});
}

TEST_F(CMsgDataTransferTest, TextEndsAtItsFirstZeroOrWithItsFrame) {
    const std::string strBoth = "<a/>" + std::string(1, '\0') + "<b/>";
    makePayload(strBoth, true)->handleMessage();
    makePayload("<c/>", true)->handleMessage();
    const std::string strCut = "<root><touch_input id=\"7\"/></root><behind";
    EXPECT_EQ(COpenMessage(&m_transfer, bytesOf(strCut), 34, true).getType(), CBaseMessage::MESSAGE_TOUCH);
    EXPECT_EQ(COpenMessage(&m_transfer, bytesOf(strCut), 33, true).getType(), CBaseMessage::MESSAGE_DATA_TRANSFER);
    EXPECT_EQ(m_listener.m_vecCall, (VecCall{"document " + HEADER + "<a/>", "document " + HEADER + "<c/>"}));
}

TEST_F(CMsgDataTransferTest, TextIsReadAsUTF8WhateverItsHeaderSays) {
    class CReader : public IDataTransferListener {
    public:
        using IDataTransferListener::onLogicDataAvailable;
        void onLogicDataAvailable(CXMLParser* pParser) override {
            m_strText = pParser->getRootElement()->getText();
            m_eEncoding = pParser->getEncoding();
        }
        CString m_strText;
        CXMLParser::EXMLEncoding m_eEncoding = CXMLParser::XML_ENCODING_NONE;
    } reader;
    m_transfer.setListener(&reader);
    makeText("<?xml version=\"1.0\" encoding=\"UTF-16\"?><a>\xE4\xB8\xAD\xC3\xA9</a>")->handleMessage();
    EXPECT_EQ(reader.m_strText, CString(L"\x4E2D\xE9"));
    EXPECT_EQ(reader.m_eEncoding, CXMLParser::XML_ENCODING_UTF16);
}

TEST_F(CMsgDataTransferTest, WithoutOwnerOrListenerNothingHappens) {
    g_aryDeletedInstance.add(nullptr); // which nobody's messages do not use up
    COpenMessage(nullptr, true).handleMessage();
    COpenMessage(nullptr, bytesOf(TOUCH), 34, true).handleMessage();
    EXPECT_EQ(g_aryDeletedInstance.getSize(), 1u);
    m_transfer.setListener(nullptr);
    COpenMessage(&m_transfer, true).handleMessage();
    makeText(TOUCH)->handleMessage();
    makeText("<a/>")->handleMessage();
    makePayload("abc", false)->handleMessage();
    m_transfer.handleDataTransferMessage(static_cast<CXMLParser*>(nullptr));
    CXMLParser parser;
    m_transfer.setListener(&m_listener);
    m_transfer.handleDataTransferMessage(static_cast<CXMLParser*>(nullptr));
    m_transfer.handleDataTransferMessage(&parser);
    EXPECT_EQ(m_listener.m_vecCall, VecCall{});
}

TEST_F(CMsgDataTransferTest, OrderIsKeptWithinEachList) {
    m_transfer.feed(xmlFrameOf(TOUCH) + frameOf("1", 0) + xmlFrameOf(PAGE) + xmlFrameOf("<a/>") + frameOf("2", 0));
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_TOUCH), 2u);
    EXPECT_EQ(m_pCenter->getMessageCountByType(CBaseMessage::MESSAGE_DATA_TRANSFER), 3u);
    drain();
    VecCall vecInput, vecData;
    for (const std::string& strCall : m_listener.m_vecCall)
        (strCall[0] == 't' || strCall[0] == 'p' ? vecInput : vecData).push_back(strCall);
    EXPECT_EQ(vecInput, (VecCall{TOUCH_7, "page 3 p"}));
    EXPECT_EQ(vecData, (VecCall{"data 1", "document " + HEADER + "<a/>", "data 2"}));
}
} // namespace
