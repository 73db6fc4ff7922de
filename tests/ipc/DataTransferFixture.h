#pragma once

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/formats/CXMLParser.h>
#include <Orlix/input/CCursor.h>
#include <Orlix/ipc/CMsgDataTransfer.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CTimerManager.h>

#include "ipc/COpenTransfer.h"
#include "support/DrainCenter.h"
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

/** A center, a log that stays off the terminal, and nothing left behind. */
class CDataTransferFixture : public ::testing::Test {
protected:
    CDataTransferFixture() : m_pCenter(Orlix::CMessageCenter::getInstance()) {}
    ~CDataTransferFixture() override {
        Orlix::CTimerManager::deleteInstance();
        Orlix::CMessageCenter::deleteInstance();
    }

    static unsigned int drain() { return drainCenter(); }
    /** @return whether a condition holds before a very long time is over. */
    template <class F> static bool await(F fnCondition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!fnCondition()) {
            if (std::chrono::steady_clock::now() > end)
                return false;
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    /** As await, while the host goes on. */
    template <class F> static bool drainUntil(F fnCondition) {
        return await([&] {
            drain();
            return fnCondition();
        });
    }

    CLogRecorder m_recorder;
    tagDeletedRecord m_record;
    Orlix::CMessageCenter* const m_pCenter;
    CTransferListener m_listener;
};
} // namespace OrlixTest
