#pragma once

#include <Orlix/input/ITouchListener.h>

class CTouchStatistics;

namespace Orlix {
class CDataTransfer;
} // namespace Orlix

/** Sends every touch that it is told of to the peer. Threads: the host thread. */
class CPeerTouchSender : public Orlix::ITouchListener {
public:
    /** @param transfer and @param statistics, which counts along, outlive this. */
    CPeerTouchSender(Orlix::CDataTransfer& transfer, CTouchStatistics& statistics) noexcept
        : m_transfer(transfer), m_statistics(statistics) {}

    void onTouchPress(const Orlix::CCursor& cursor) override { send(cursor); }
    void onTouchMove(const Orlix::CCursor& cursor) override { send(cursor); }
    void onTouchRelease(const Orlix::CCursor& cursor) override { send(cursor); }
    void onTouchWheel(const Orlix::CCursor& cursor) override { send(cursor); }

    /** Touches that came while no peer was connected. */
    unsigned int getLostCount() const noexcept { return m_uiLost; }

private:
    void send(const Orlix::CCursor& cursor);

    Orlix::CDataTransfer& m_transfer;
    CTouchStatistics& m_statistics;
    unsigned int m_uiLost = 0;
};
