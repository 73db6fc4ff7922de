#pragma once

#include <Orlix/foundation/CString.h>
#include <Orlix/messaging/IMessageCenterListener.h>
#include <Orlix/messaging/IMsgSystemListener.h>
#include <Orlix/messaging/IMsgUserListener.h>

#include <string>
#include <vector>

namespace OrlixTest {

using VecCall = std::vector<std::wstring>;

inline std::wstring toText(const Orlix::CString& str) { return str.getBuffer() ? str.getBuffer() : L""; }

/** Writes down every call it gets, as a text with its arguments; the attached object only as there or not. */
class CRecordingListener : public Orlix::IMessageCenterListener {
public:
    explicit CRecordingListener(VecCall& vecCall) : m_vecCall(vecCall) {}

    void onHandleQuitMessage() override { note(L"quit"); }
    void onHandleRenderMessage(unsigned int uiID) override { note(L"render", {uiID}); }
    void onHandleLogicEventMessage(unsigned int uiID) override { note(L"logic", {uiID}); }
    void onHandleVoiceContentMessage(const Orlix::CString& str) override { note(L"voice " + toText(str)); }
    void onHandleSystemMessage(unsigned int uiID, Orlix::CObject* pData) override { note(L"system", {uiID}, pData); }
    void onHandleGestureMessage(unsigned int uiParam, unsigned int uiID, Orlix::CObject* pData) override {
        note(L"gesture", {uiParam, uiID}, pData);
    }
    void onHandleHardkeyMessage(unsigned int uiKey, unsigned int uiState) override {
        note(L"hardkey", {uiKey, uiState});
    }
    void onHandleIMEMessage(const Orlix::CString& str) override { note(L"ime " + toText(str)); }
    void onHandleDataContextMessage(unsigned int uiID, Orlix::CObject* pData) override { note(L"data", {uiID}, pData); }
    void onHandleUserMessage(unsigned int uiID, Orlix::CObject* pData) override { note(L"user", {uiID}, pData); }
    void onMessageAvailable() override { ++m_iAvailable; }

    int m_iAvailable = 0;

private:
    void note(std::wstring strCall, std::vector<unsigned int> vecNumber = {}, const Orlix::CObject* pData = nullptr) {
        for (unsigned int uiNumber : vecNumber)
            strCall += L" " + std::to_wstring(uiNumber);
        m_vecCall.push_back(pData ? strCall + L" with data" : strCall);
    }
    VecCall& m_vecCall;
};

/** A message's own receiver. */
class COwnListener : public Orlix::IMsgSystemListener, public Orlix::IMsgUserListener {
public:
    explicit COwnListener(VecCall& vecCall) : m_vecCall(vecCall) {}
    void onHandleSystemMessage(unsigned int uiID, Orlix::CObject* pData) override {
        m_vecCall.push_back(L"own system " + std::to_wstring(uiID) + (pData ? L" with data" : L""));
    }
    void onHandleUserMessage(unsigned int uiID, Orlix::CObject* pData) override {
        m_vecCall.push_back(L"own user " + std::to_wstring(uiID) + (pData ? L" with data" : L""));
    }

private:
    VecCall& m_vecCall;
};
} // namespace OrlixTest
