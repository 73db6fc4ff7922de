#include "ipc/DataTransferFixture.h"
#include "ipc/RecordingSockets.h"
#include "threading/TimerFixture.h"

#include <Orlix/formats/CXMLElement.h>

using namespace Orlix;
using namespace OrlixTest;

namespace {

const std::string DECLARATION = "<?xml version=\"1.0\" encoding=\"UTF-16\"?>"; // although the bytes are UTF-8
constexpr auto HANDLE = IDataTransferListener::EOperationHandle(-3);

class CDataTransferSend : public CTimerFixture {
protected:
    CDataTransferSend() {
        m_pClient = new CRecordingClient(m_vecCall);
        m_transfer.m_pClient = m_pClient;
    }

    void sendText(const std::string& strText) {
        m_transfer.sendLogicData(bytesOf(strText), static_cast<unsigned int>(strText.size()));
    }
    /** All bytes that went out, in one piece. */
    std::string getBytes() const {
        std::string strBytes;
        for (const std::string& strCall : m_vecCall)
            strBytes += strCall.substr(strCall.find(' ') + 1);
        return strBytes;
    }

    CLogRecorder m_recorder;
    tagDeletedRecord m_record;
    CRecordingClient* m_pClient; // owned by the transfer
    COpenTransfer m_transfer;
};

TEST_F(CDataTransferSend, HeaderAndPayloadGoOutOneBehindTheOther) {
    sendText("abc");
    EXPECT_EQ(m_vecCall, (VecCall{std::string("quiet IVEN\0\x03\0\0\0\0", 16), "quiet abc"}));
}

TEST_F(CDataTransferSend, LengthIsLittleEndianAndTheTypeTellsDocuments) {
    const struct {
        unsigned int uiLength;
        bool bXML;
        std::string strHeader;
    } aryRow[] = {{1, false, std::string("IVEN\0\x01\0\0\0\0", 10)},
                  {1, true, std::string("IVEN\0\x01\0\0\0\x01", 10)},
                  {0, false, std::string("IVEN\0\0\0\0\0\0", 10)},
                  {0x1234, false, std::string("IVEN\0\x34\x12\0\0\0", 10)},
                  {0x01020304, true, std::string("IVEN\0\x04\x03\x02\x01\x01", 10)}};
    for (const auto& row : aryRow) {
        m_vecCall.clear();
        const std::string strPayload(row.uiLength, 'p');
        m_transfer.sendData(bytesOf(strPayload), row.uiLength, row.bXML);
        ASSERT_EQ(m_vecCall.size(), 2u);
        EXPECT_EQ(m_vecCall[0].substr(6), row.strHeader) << row.uiLength;
        EXPECT_TRUE(m_vecCall[1].compare(6, std::string::npos, strPayload) == 0) << row.uiLength;
    }
}

TEST_F(CDataTransferSend, ResultsOfTheSocketAreIgnored) {
    for (const int iResult : {-1, 0, 1, 3}) {
        m_pClient->m_iResult = iResult;
        m_vecCall.clear();
        sendText("abc");
        EXPECT_EQ(getBytes(), frameOf("abc", 0)) << iResult;
    }
    EXPECT_EQ(m_recorder.getLines(), std::vector<std::wstring>{});
}

// Heartbeats flow only when nothing was sent for their whole delay: each framed send begins it anew.
TEST_F(CDataTransferSend, FramedSendsStartTheHeartBeatAnew) {
    EXPECT_FALSE(m_pClient->m_timerHeartBeat.isRunning()) << "a connection alone does not beat";
    sendText("a");
    EXPECT_TRUE(m_pClient->m_timerHeartBeat.isRunning());
    EXPECT_EQ(m_pClient->m_timerHeartBeat.getListener(), m_pClient);
    cycle(4999);
    drain();
    setTick(4999);
    sendText("b");
    EXPECT_EQ(m_vecCall.back(), "quiet b") << "no heartbeat comes between the two parts";
    m_vecCall.clear();
    cycle(9998);
    EXPECT_EQ(drain(), 0u) << "5000 ms count from the last send";
    cycle(9999);
    EXPECT_EQ(drain(), 1u);
    EXPECT_EQ(m_vecCall, VecCall{std::string("beating \xAF\0", 10)});
    cycle(14999);
    drain();
    EXPECT_EQ(m_vecCall.size(), 2u) << "and on and on";
}

TEST_F(CDataTransferSend, RawSendsHaveNoHeaderAndTouchNoHeartBeat) {
    m_transfer.setRawConnection(true);
    sendText("raw");
    EXPECT_FALSE(m_pClient->m_timerHeartBeat.isRunning());
    m_transfer.setRawConnection(false);
    sendText("framed");
    m_transfer.setRawConnection(true);
    sendText("raw");
    EXPECT_TRUE(m_pClient->m_timerHeartBeat.isRunning());
    EXPECT_EQ(m_vecCall[0], "quiet raw");
    EXPECT_EQ(m_vecCall.back(), "beating raw");
    EXPECT_EQ(getBytes(), "raw" + frameOf("framed", 0) + "raw");
}

TEST_F(CDataTransferSend, ServerSendsGoToNobody) {
    m_transfer.close();
    m_transfer.m_pServer = new CRecordingServer(m_vecCall);
    sendText("abc");
    m_transfer.setRawConnection(true);
    sendText("raw");
    EXPECT_EQ(m_vecCall, (VecCall{std::string("0 IVEN\0\x03\0\0\0\0", 12), "0 abc", "0 raw"}));
    EXPECT_EQ(m_pManager->m_aryTimer.getSize(), 0u) << "heartbeats are the client's";
}

TEST_F(CDataTransferSend, TouchInputDocument) {
    CCursor cursor;
    cursor.setID(4294967295u);
    cursor.setX(1);
    cursor.setXDelta(-2);
    cursor.setXSpeed(3);
    cursor.setY(-4);
    cursor.setYDelta(5);
    cursor.setYSpeed(-6);
    cursor.setTouchStatus(CCursor::TOUCH_RELEASE);
    cursor.setTimestamp(4000000000u);
    cursor.setDistance(9);
    m_transfer.sendTouchInput(cursor);
    EXPECT_EQ(getBytes(), xmlFrameOf(DECLARATION + "<root><touch_input id=\"4294967295\" time_stamp=\"4000000000\" "
                                                   "touch_status=\"3\" x=\"1\" x_delta=\"-2\" x_speed=\"3\" y=\"-4\" "
                                                   "y_delta=\"5\" y_speed=\"-6\"/></root>"));
}

TEST_F(CDataTransferSend, UnsetCursorDocument) {
    m_transfer.sendTouchInput(CCursor());
    EXPECT_EQ(getBytes(), xmlFrameOf(DECLARATION + "<root><touch_input id=\"0\" time_stamp=\"0\" touch_status=\"0\" "
                                                   "x=\"-1\" x_delta=\"0\" x_speed=\"0\" y=\"-1\" y_delta=\"0\" "
                                                   "y_speed=\"0\"/></root>"));
}

TEST_F(CDataTransferSend, CommandDocumentsShareTheNameOfTheirAttribute) {
    m_transfer.sendPageCMD(HANDLE, L"a<\x4E2D>");
    EXPECT_EQ(getBytes(), xmlFrameOf(DECLARATION + "<root><page_cmd ope_handle=\"-3\" "
                                                   "page_name=\"a&lt;\xE4\xB8\xAD&gt;\"/></root>"));
    m_vecCall.clear();
    m_transfer.sendPopupCMD(HANDLE, L"name");
    EXPECT_EQ(getBytes(), xmlFrameOf(DECLARATION + "<root><popup_cmd ope_handle=\"-3\" page_name=\"name\"/></root>"));
    m_vecCall.clear();
    m_transfer.sendPageCMD(HANDLE, STRING_NULL);
    EXPECT_EQ(getBytes(), xmlFrameOf(DECLARATION + "<root><page_cmd ope_handle=\"-3\" page_name=\"\"/></root>"));
}

TEST_F(CDataTransferSend, DocumentsGoOutAsUTF8WithTheirZero) {
    CXMLParser parser;
    ASSERT_TRUE(parser.parseFromString(L"<r><c/></r>"));
    parser.getRootElement()->getChildAt(0)->setText(L"\xE9\x4E2D");
    m_transfer.sendLogicData(&parser, false);
    EXPECT_EQ(getBytes(), xmlFrameOf("<?xml version=\"1.0\" encoding=\"UTF-8\"?><r><c>\xC3\xA9\xE4\xB8\xAD</c></r>"));
    m_vecCall.clear();
    m_transfer.sendLogicData(&parser, true);
    CString strFormatted;
    parser.saveToString(strFormatted, true);
    EXPECT_EQ(getBytes().size(), 10 + strFormatted.length() + 3 + 1) << "and with its layout if that is asked for";
    m_vecCall.clear();
    m_transfer.sendLogicData(nullptr, false);
    EXPECT_EQ(m_vecCall, VecCall{});
}

TEST_F(CDataTransferSend, DocumentsThatCannotBeSavedGoOutAsWhatTheyAre) {
    CXMLParser parser;
    m_transfer.sendLogicData(&parser, false); // no encoding
    EXPECT_EQ(getBytes(), xmlFrameOf(""));
    m_vecCall.clear();
    parser.create(CXMLParser::XML_ENCODING_UTF8); // no root
    m_transfer.sendLogicData(&parser, false);
    EXPECT_EQ(getBytes(), xmlFrameOf("<?xml version=\"1.0\" encoding=\"UTF-8\"?>"));
}
} // namespace
