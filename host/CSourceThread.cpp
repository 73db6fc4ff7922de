#include "CSourceThread.h"

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

void CSourceThread::waitForRoom() {
    while (CMessageCenter::getInstance()->getMessageCount() > MESSAGES_MOST)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
}
