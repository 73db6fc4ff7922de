#include "CSignalWatch.h"

#include <Orlix/messaging/CMessageCenter.h>

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

using namespace Orlix;

namespace {

/** @return a descriptor that can be read once such a signal has come; -1, and they kill as ever, without a free one. */
int holdSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    const int iSignals = signalfd(-1, &signals, SFD_CLOEXEC);
    if (iSignals >= 0)
        pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return iSignals;
}
} // namespace

CSignalWatch::CSignalWatch()
    : m_iSignals(holdSignals()), m_thread([this] {
          if (m_stop.waitForInput(m_iSignals))
              CMessageCenter::getInstance()->pushQuitMessage();
      }) {}

CSignalWatch::~CSignalWatch() {
    m_stop.set();
    m_thread.join();
    if (m_iSignals >= 0)
        close(m_iSignals);
}
