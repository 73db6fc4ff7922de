#pragma once

#include <Orlix/ipc/CShareMemory.h>
#include <Orlix/ipc/IShareMemoryListener.h>

#include <memory>

/** Prints what comes through a shared-memory channel, a line for each block, and ends the host when the writer closes.
 *
 *  Threads: the host thread. */
class CShareReader : public Orlix::IShareMemoryListener {
public:
    CShareReader() { m_channel.setListener(this); }

    /** @return false, after one line on stderr, if the channel cannot be opened. */
    bool open(unsigned int uiKey, unsigned int uiSize);

    void onDataAvailable() override;
    void onWritterClose() override;

private:
    std::unique_ptr<unsigned char[]> m_ptrBlock; // room for the largest block
    Orlix::CShareMemory m_channel;
};
