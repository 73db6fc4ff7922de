#include "CSourceThread.h"

#include "CEventFlag.h"
#include "ExitCode.h"
#include "ISource.h"

#include <Orlix/messaging/CMessageCenter.h>

#include <chrono>

using namespace Orlix;

namespace {

constexpr unsigned int MESSAGES_MOST = 1000;
} // namespace

CSourceThread::CSourceThread(ISource& source)
    : m_iExitCode(EXIT_DONE), m_thread([this, &source] {
          m_iExitCode = source.run();
          CMessageCenter::getInstance()->pushLogicEventMessage(END_OF_SOURCE);
      }) {}

CSourceThread::~CSourceThread() { join(); }

int CSourceThread::join() {
    if (m_thread.joinable())
        m_thread.join();
    return m_iExitCode;
}

void CSourceThread::waitForRoom(const CEventFlag& stop) {
    while (CMessageCenter::getInstance()->getMessageCount() > MESSAGES_MOST &&
           stop.sleepUntil(std::chrono::steady_clock::now() + std::chrono::milliseconds(1))) {}
}
