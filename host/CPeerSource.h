#pragma once

#include "CEventFlag.h"
#include "ExitCode.h"
#include "ISource.h"

/** Plays another source once a peer is there to see it. */
class CPeerSource : public ISource {
public:
    /** @param flagConnected set when the peer is there. @param stop ends the waiting. All three outlive this. */
    CPeerSource(ISource& source, const CEventFlag& flagConnected, const CEventFlag& stop) noexcept
        : m_source(source), m_flagConnected(flagConnected), m_stop(stop) {}

    bool open(const char* pPath) override { return m_source.open(pPath); }
    int run() override { return m_stop.waitForInput(m_flagConnected.getDescriptor()) ? m_source.run() : EXIT_DONE; }

private:
    ISource& m_source;
    const CEventFlag& m_flagConnected;
    const CEventFlag& m_stop;
};
