#include "CHostApplication.h"

#include "CTextSource.h"

#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/threading/CTime.h>

#include <cstdio>

using namespace Orlix;

CHostApplication::CHostApplication() : m_waitMessage(L"host"), m_uiStartTick(CTime::getTickCount()) {
    CMessageCenter::getInstance()->setListener(this);
}

CHostApplication::~CHostApplication() { CMessageCenter::deleteInstance(); }

void CHostApplication::runLoop() {
    CMessageCenter* const pCenter = CMessageCenter::getInstance();
    while (!m_bQuit) {
        if (const CObjectPtr<CBaseMessage> ptrMessage = pCenter->popMessage())
            ptrMessage->handleMessage();
        else
            sleepUntilMessage();
    }
}

void CHostApplication::sleepUntilMessage() {
    std::fflush(stdout);   // whoever reads along sees each line as it comes; under load the stream may collect
    m_waitMessage.wait(0); // a push since the last pop is remembered, so no wake-up is lost
}

void CHostApplication::printSummary() const {
    CStringConverter::printf(L"%u lines, %u renders, %u ms\n", m_uiLines, m_uiRenders,
                             CTime::getTickCount() - m_uiStartTick);
}

void CHostApplication::onHandleQuitMessage() { m_bQuit = true; }

void CHostApplication::onHandleRenderMessage(unsigned int uiID) {
    ++m_uiRenders;
    CStringConverter::printf(L"render %u\n", uiID);
}

void CHostApplication::onHandleIMEMessage(const CString& strText) {
    ++m_uiLines;
    CStringConverter::printf(L"text %s\n", strText.getBuffer() ? strText.getBuffer() : L"");
}

// A quit message goes before everything that waits, so it is posted only when the end of the text has come out.
void CHostApplication::onHandleLogicEventMessage(unsigned int uiID) {
    if (uiID == CTextSource::END_OF_TEXT)
        CMessageCenter::getInstance()->pushQuitMessage();
}

void CHostApplication::onMessageAvailable() { m_waitMessage.notify(); }
