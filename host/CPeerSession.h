#pragma once

#include "CPeerChannel.h"
#include "CSignalWatch.h"
#include "CTransferPrinter.h"

class CHostOptions;

/** The host with a peer: a channel, the lines that it prints, and a host that ends on SIGINT and SIGTERM.
 *
 *  Construct before other threads are started, destroy before the host application. Threads: the host thread. */
class CPeerSession {
public:
    /** Opens the channel as the command line says; the destructor closes it. */
    explicit CPeerSession(const CHostOptions& options);

    CPeerChannel& getChannel() noexcept { return m_channel; }

private:
    CSignalWatch m_signals; // the last to go: the channel may take a moment to close
    CTransferPrinter m_printer;
    CPeerChannel m_channel;
};
