#pragma once

#include <Orlix/foundation/CObject.h>

namespace Orlix {

class CShareMemory;
class IShareMemoryListener;

/** A narrow front of a shared-memory channel of its own. Its open is inert on purpose, so the channel stays closed: who
 *  needs an open one uses CShareMemory. Threads: the host thread. */
class ORLIX_API CShareMemoryProxy {
    ORLIX_HEAP_CLASS(L"CShareMemoryProxy")

public:
    CShareMemoryProxy();
    CShareMemoryProxy(const CShareMemoryProxy&) = delete;
    CShareMemoryProxy& operator=(const CShareMemoryProxy&) = delete;
    /** Closes the channel. */
    virtual ~CShareMemoryProxy();

    /** Does nothing, whatever the arguments. @return false. */
    bool open(unsigned int uiKey, bool bWriter, unsigned int uiSize);

    // These do what the operations of CShareMemory do.

    void setListener(IShareMemoryListener* pListener);
    void close();
    bool isEmpty() const;
    unsigned int getSize() const;
    bool writeData(const unsigned char* pData, unsigned int uiSize);
    bool readData(unsigned char* pBuffer, unsigned int uiSize);

protected:
    CShareMemory* m_pShareMemory; // owned; null only if it could not be allocated
};
} // namespace Orlix
