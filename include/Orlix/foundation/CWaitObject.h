#pragma once

#include <Orlix/foundation/CObject.h>

namespace Orlix {

class CString;
class IWaitObject;

/** An event that one thread waits for and others announce. An announcement with nobody waiting is remembered for the
 *  next wait; several before it count as one.
 *
 *  Built without memory for its implementation it waits for nothing. Threads: any operation from any thread, with one
 *  waiter as the normal case: an announcement wakes a single thread. */
class ORLIX_API CWaitObject : public CObject {
    ORLIX_HEAP_CLASS(L"CWaitObject")

public:
    /** @param strName names the event for the reader; it is not used. */
    explicit CWaitObject(const CString& strName);
    CWaitObject(const CWaitObject&) = delete;
    CWaitObject& operator=(const CWaitObject&) = delete;
    /** Only while no thread waits. */
    ~CWaitObject() override;

    /** Blocks until the event is announced, then takes the announcement.
     *  @param uiMilliseconds the longest wait; 0 waits without limit. A limited wait may end early without an
     *  announcement, so test your own condition again. */
    void wait(unsigned int uiMilliseconds);

    /** Sleeps this long, whatever is announced meanwhile; the announcement stays for the next wait. */
    void forceWait(unsigned int uiMilliseconds);

    /** Announces the event. */
    void notify();

    /** Does nothing, on purpose: an announcement that was not yet waited for survives it. */
    void reset() override;

protected:
    IWaitObject* m_pImp; // owned; null only if it could not be allocated
};
} // namespace Orlix
