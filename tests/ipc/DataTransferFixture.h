#pragma once

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/formats/CXMLParser.h>
#include <Orlix/input/CCursor.h>
#include <Orlix/ipc/CDataTransfer.h>
#include <Orlix/ipc/CMsgDataTransfer.h>
#include <Orlix/ipc/CSocketServer.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CTimerManager.h>

#include "support/LogSettings.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace OrlixTest {

using VecCall = std::vector<std::string>;

/** The characters of a text that is ASCII. */
inline std::string narrow(const Orlix::CString& strText) {
    const wchar_t* const pText = strText.getBuffer();
    return pText ? std::string(pText, pText + strText.length()) : std::string();
}

inline const unsigned char* bytesOf(const std::string& strBytes) {
    return reinterpret_cast<const unsigned char*>(strBytes.data());
}

/** A frame as peers make it. */
inline std::string frameOf(const std::string& strPayload, char chType, char chReserved = 0) {
    const std::size_t uiLength = strPayload.size();
    std::string strFrame("\x49\x56\x45\x4E", 4);
    strFrame += chReserved;
    for (int iShift = 0; iShift < 32; iShift += 8)
        strFrame += static_cast<char>(uiLength >> iShift & 0xFF);
    return strFrame + chType + strPayload;
}

inline std::string xmlFrameOf(const std::string& strText) { return frameOf(strText + '\0', 1); }

/** Writes down every call it gets, and then does what the test wants done in the middle of it. */
class CTransferListener : public Orlix::IDataTransferListener {
public:
    void onConnect() override { note("connect"); }
    void onDisconnect() override { note("disconnect"); }
    void onTouchInputAvailable(const Orlix::CCursor& cursor) override {
        note("touch " + std::to_string(cursor.getID()) + " at " + std::to_string(cursor.getX()) + "," +
             std::to_string(cursor.getY()) + " delta " + std::to_string(cursor.getXDelta()) + "," +
             std::to_string(cursor.getYDelta()) + " speed " + std::to_string(cursor.getXSpeed()) + "," +
             std::to_string(cursor.getYSpeed()) + " status " + std::to_string(cursor.getTouchStatus()) + " time " +
             std::to_string(cursor.getTimestamp()) + " distance " + std::to_string(cursor.getDistance()));
    }
    void onPageCMDAvailable(EOperationHandle eHandle, Orlix::CString strPageName) override {
        note("page " + std::to_string(eHandle) + " " + narrow(strPageName));
    }
    void onPopupCMDAvailable(EOperationHandle eHandle, Orlix::CString strPopupName) override {
        note("popup " + std::to_string(eHandle) + " " + narrow(strPopupName));
    }
    void onLogicDataAvailable(Orlix::CXMLParser* pParser) override {
        Orlix::CString strText;
        pParser->saveToString(strText, false);
        note("document " + narrow(strText));
    }
    void onLogicDataAvailable(Orlix::CArrayPtr<unsigned char> aryData) override {
        note("data " + std::string(aryData.getArray(), aryData.getArray() + aryData.getSize()));
    }

    VecCall m_vecCall;
    std::function<void()> m_fnInCall;

private:
    void note(const std::string& strCall) {
        m_vecCall.push_back(strCall);
        if (m_fnInCall)
            m_fnInCall();
    }
};

/** Forgets the instances that went before it. */
struct tagDeletedRecord {
    ~tagDeletedRecord() { Orlix::CDataTransfer::deleteAllInstance(); }
};

/** A data transfer with its fields open. */
class COpenTransfer : public Orlix::CDataTransfer {
public:
    COpenTransfer() = default;
    /** Open as a server that never starts, so that a test can play the socket's thread. */
    explicit COpenTransfer(Orlix::IDataTransferListener* pListener) {
        m_pServer = new Orlix::CSocketServer(1, 16);
        m_pListener = pListener;
    }
    using CDataTransfer::m_bConnected;
    using CDataTransfer::m_bRawConnection;
    using CDataTransfer::m_bufReceive;
    using CDataTransfer::m_pClient;
    using CDataTransfer::m_pListener;
    using CDataTransfer::m_pServer;

    void feed(const std::string& strBytes) { parseData(bytesOf(strBytes), static_cast<unsigned int>(strBytes.size())); }
    /** What waits for more. */
    std::string getHeld() const {
        const unsigned char* const pBytes = m_bufReceive.buffer();
        return pBytes ? std::string(pBytes, pBytes + m_bufReceive.getSize()) : std::string();
    }
};

/** A center, a log that stays off the terminal, and nothing left behind. */
class CDataTransferFixture : public ::testing::Test {
protected:
    CDataTransferFixture() : m_pCenter(Orlix::CMessageCenter::getInstance()) {}
    ~CDataTransferFixture() override {
        Orlix::CTimerManager::deleteInstance();
        Orlix::CMessageCenter::deleteInstance();
    }

    /** What the host does until nothing waits. @return the messages handled. */
    unsigned int drain() {
        unsigned int uiMessages = 0;
        while (true) {
            const Orlix::CObjectPtr<Orlix::CBaseMessage> ptrMessage = m_pCenter->popMessage();
            if (ptrMessage.isEmpty())
                return uiMessages;
            ptrMessage->handleMessage();
            ++uiMessages;
        }
    }
    /** What the host does until something holds. @return whether it does before a very long time is over. */
    template <class F> bool drainUntil(F fnCondition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!fnCondition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            if (drain() == 0)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    CLogRecorder m_recorder;
    tagDeletedRecord m_record;
    Orlix::CMessageCenter* const m_pCenter;
    CTransferListener m_listener;
};
} // namespace OrlixTest
