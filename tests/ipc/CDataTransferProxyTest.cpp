#include <Orlix/ipc/CDataTransferProxy.h>

#include "ipc/DataTransferFixture.h"
#include "ipc/RecordingSockets.h"

using namespace Orlix;
using namespace OrlixTest;

namespace {

/** A proxy whose channel a test can open. */
class COpenProxy : public CDataTransferProxy {
public:
    template <class T> T& getField(T CDataTransfer::*pField) { return m_dataTransfer.*pField; }
    CDataTransfer& getTransfer() { return m_dataTransfer; }
};

class CDataTransferProxyTest : public CDataTransferFixture {
protected:
    COpenProxy m_proxy;
    VecCall m_vecSent;

    template <class T> T& field(T CDataTransfer::*pField) { return m_proxy.getField(pField); }
    /** Opens it as a client without a connection. */
    void open() { field(&COpenTransfer::m_pClient) = new CRecordingClient(m_vecSent); }
    /** The payload of the last send. */
    std::string getSent() const { return m_vecSent.back().substr(m_vecSent.back().find(' ') + 1); }
};

TEST_F(CDataTransferProxyTest, OpensNothing) {
    m_proxy.openAsServer(1);
    m_proxy.openAsClient(L"127.0.0.1", 1);
    EXPECT_EQ(field(&COpenTransfer::m_pServer), nullptr);
    EXPECT_EQ(field(&COpenTransfer::m_pClient), nullptr);
    EXPECT_FALSE(m_proxy.isConnect());
}

TEST_F(CDataTransferProxyTest, ForwardsTheRest) {
    open();
    m_proxy.setListener(&m_listener);
    EXPECT_EQ(field(&COpenTransfer::m_pListener), &m_listener);
    m_proxy.getTransfer().onConnect(static_cast<CSocketClient*>(nullptr));
    EXPECT_TRUE(m_proxy.isConnect());
    m_proxy.setRawConnection(true);
    EXPECT_TRUE(field(&COpenTransfer::m_bRawConnection));

    m_proxy.sendLogicData(bytesOf("abc"), 3);
    EXPECT_EQ(getSent(), "abc");
    CXMLParser parser;
    parser.parseFromString(L"<a/>");
    m_proxy.sendLogicData(&parser, false);
    EXPECT_EQ(getSent(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>" + std::string(1, '\0'));
    m_proxy.sendLogicData(&parser, true);
    EXPECT_NE(getSent().find("?>\n"), std::string::npos);
    CCursor cursor;
    cursor.setID(77);
    m_proxy.sendTouchInput(cursor);
    EXPECT_NE(getSent().find("<touch_input id=\"77\""), std::string::npos);
    m_proxy.sendPageCMD(IDataTransferListener::EOperationHandle(5), L"n");
    EXPECT_NE(getSent().find("<page_cmd ope_handle=\"5\" page_name=\"n\"/>"), std::string::npos);
    m_proxy.sendPopupCMD(IDataTransferListener::EOperationHandle(6), L"n");
    EXPECT_NE(getSent().find("<popup_cmd ope_handle=\"6\" page_name=\"n\"/>"), std::string::npos);

    m_proxy.close();
    EXPECT_EQ(field(&COpenTransfer::m_pClient), nullptr);
    EXPECT_FALSE(m_proxy.isConnect());
}

TEST_F(CDataTransferProxyTest, DestructionEndsItsDataTransfer) {
    const CDataTransfer* pTransfer = nullptr;
    {
        COpenProxy proxy;
        pTransfer = &proxy.getTransfer();
        EXPECT_TRUE(CDataTransfer::isAlive(pTransfer));
    }
    EXPECT_FALSE(CDataTransfer::isAlive(pTransfer));
}
} // namespace
