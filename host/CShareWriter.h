#pragma once

#include "ISource.h"

#include <Orlix/ipc/CShareMemory.h>

#include <memory>

class CEventFlag;

/** Writes a file to a shared-memory channel, block by block, and closes it. A block goes out when the reader is through
 *  with the one before. Without a reader nothing waits: each block then replaces the one before unseen.
 *
 *  Threads: open on the host thread, then the channel belongs to the source's thread. */
class CShareWriter : public ISource {
public:
    /** @param stop ends the writing early, without an error. Outlives this. */
    CShareWriter(unsigned int uiKey, unsigned int uiSize, const CEventFlag& stop);
    CShareWriter(const CShareWriter&) = delete;
    CShareWriter& operator=(const CShareWriter&) = delete;
    ~CShareWriter() override;

    /** @param pPath the file; "-" for standard input. */
    bool open(const char* pPath) override;
    /** Opens the channel, and does not end before the block of leave is out, if it can be at all. */
    int run() override;

private:
    /** A channel that tells whether it would take a block. */
    class CWriterChannel : public Orlix::CShareMemory {
    public:
        using CShareMemory::canWrite;
    };

    const unsigned int m_uiKey;
    const unsigned int m_uiSize;
    const CEventFlag& m_stop;
    const char* m_pPath = nullptr;
    int m_iFile = -1;
    std::unique_ptr<unsigned char[]> m_ptrBlock; // room for the largest block
    CWriterChannel m_channel;

    int writeFile();
    bool readBlock(unsigned int& uiFilled);
    bool waitUntilReady();
    void close();
};
