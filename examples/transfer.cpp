// transfer ADDRESS PORT: connects to a peer, sends it one message of each kind, and goes on until the peer goes. A
// heartbeat follows whenever nothing was sent for five seconds.
#include <Orlix/Orlix.h>

#include <clocale>
#include <cstdlib>

using namespace Orlix;

namespace {

class CSender : public IMessageCenterListener, public IDataTransferListener {
public:
    explicit CSender(CDataTransfer& transfer) : m_transfer(transfer) {}

    void run() {
        while (!m_bDone) {
            if (const CObjectPtr<CBaseMessage> ptrMessage = CMessageCenter::getInstance()->popMessage())
                ptrMessage->handleMessage();
            else
                m_waitMessage.wait(0);
        }
    }

private:
    void onMessageAvailable() override { m_waitMessage.notify(); }
    void onDisconnect() override { m_bDone = true; }

    void onConnect() override {
        CCursor cursor;
        cursor.setID(1);
        cursor.setTouchStatus(CCursor::TOUCH_MOVE);
        cursor.setX(345);
        cursor.setXDelta(80);
        cursor.setY(353);
        cursor.setYDelta(-60);
        cursor.setTimestamp(1050);
        m_transfer.sendTouchInput(cursor);
        m_transfer.sendPageCMD(EOperationHandle(1), L"main");
        m_transfer.sendPopupCMD(EOperationHandle(2), L"R&D");

        CXMLParser parser;
        parser.create(CXMLParser::XML_ENCODING_UTF8);
        parser.addRootElement(L"volume")->setAttribute(L"percent", 80);
        m_transfer.sendLogicData(&parser, false);

        const unsigned char aryBlock[] = {1, 2, 3, 253, 254, 255};
        m_transfer.sendLogicData(aryBlock, sizeof(aryBlock));
    }

    CDataTransfer& m_transfer;
    CWaitObject m_waitMessage{STRING_NULL}; // notified by every push
    bool m_bDone = false;
};
} // namespace

int main(int iCount, char** ppArgument) {
    std::setlocale(LC_ALL, "C.UTF-8");
    if (iCount != 3)
        return 2;
    CString strAddress;
    CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(ppArgument[1]), strAddress);
    {
        CDataTransfer transfer;
        CSender sender(transfer);
        CMessageCenter::getInstance()->setListener(&sender);
        CTimerManager::getInstance()->start(); // it times the heartbeats
        transfer.setListener(&sender);
        transfer.openAsClient(strAddress, static_cast<unsigned int>(std::strtoul(ppArgument[2], nullptr, 10)));
        sender.run();
        transfer.setListener(nullptr);
        transfer.close();
        CTimerManager::getInstance()->stop();
        CMessageCenter::getInstance()->setListener(nullptr);
    }
    CDataTransfer::deleteAllInstance();
    CTimerManager::deleteInstance();
    CMessageCenter::deleteInstance();
    CConfigParser::deleteInstance();
}
