#include "CHostApplication.h"

#include "CSourceThread.h"

#include <Orlix/formats/CConfigParser.h>
#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringConverter.h>
#include <Orlix/input/CPlatformFactory.h>
#include <Orlix/input/CSurface.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/system/CLog.h>
#include <Orlix/threading/CTime.h>
#include <Orlix/threading/CTimerManager.h>

#include <cstdio>

using namespace Orlix;

CHostApplication::CHostApplication()
    : m_waitMessage(L"host"), m_touchPrinter(m_statistics), m_uiStartTick(CTime::getTickCount()) {
    CLog::initialize();
    CMessageCenter::getInstance()->setListener(this);
    CPlatformFactory::getInstance()->registerFactory(&m_platform);
    CTimerManager::getInstance(); // every singleton is made here, before there are other threads
}

CHostApplication::~CHostApplication() {
    CTimerManager::getInstance()->stop();
    for (unsigned int i = 0; i < m_uiSurfaces; ++i)
        CSurface::getInstance(i, true)->unInitialize();
    CSurface::deleteInstance();
    CPlatformFactory::deleteInstance();
    CTimerManager::deleteInstance();
    CMessageCenter::deleteInstance();
    CLog::unInitialize();
    CConfigParser::deleteInstance();
}

bool CHostApplication::start() {
    const unsigned int uiCount = CConfigParser::getInstance()->getSurfaceCount();
    while (m_uiSurfaces < uiCount) {
        if (!startSurface(m_uiSurfaces)) {
            std::fprintf(stderr, "orlix-host: surface %u cannot be brought up\n", m_uiSurfaces);
            return false;
        }
        ++m_uiSurfaces;
    }
    CTimerManager::getInstance()->start();
    return true;
}

bool CHostApplication::startSurface(unsigned int uiIndex) {
    CSurface* const pSurface = CSurface::getInstance(uiIndex, true);
    if (!pSurface || !pSurface->initialize())
        return false;
    const CConfigParser::tagSurface& config = *CConfigParser::getInstance()->getSurfaceByIndex(uiIndex);
    pSurface->setSurfaceName(config.name);
    pSurface->setTouchListener(m_pTouchListener);
    pSurface->setSurfaceListener(this);
    pSurface->setEnable(config.enable_touch);
    return true;
}

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

void CHostApplication::printTextSummary() const {
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

// A quit message goes before everything that waits, so it is posted only when the end of the source has come out.
void CHostApplication::onHandleLogicEventMessage(unsigned int uiID) {
    if (uiID == CSourceThread::END_OF_SOURCE)
        CMessageCenter::getInstance()->pushQuitMessage();
}

void CHostApplication::onMessageAvailable() {
    m_statistics.onPosted();
    m_waitMessage.notify();
}
