#pragma once

#include "CEventFlag.h"

#include <thread>

/** Turns SIGINT and SIGTERM into a quit message, so that the host ends by the usual way and with its output whole.
 *
 *  Construct before other threads are started, which inherit that these signals do not reach them, and once the message
 *  center has its listener; destroy while the center still lives. The signals stay held off afterwards. */
class CSignalWatch {
public:
    CSignalWatch();
    CSignalWatch(const CSignalWatch&) = delete;
    CSignalWatch& operator=(const CSignalWatch&) = delete;
    ~CSignalWatch();

private:
    int m_iSignals;
    CEventFlag m_stop;
    std::thread m_thread;
};
