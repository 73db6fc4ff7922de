#pragma once

#include <Orlix/foundation/CArrayPtr.h>
#include <Orlix/foundation/CString.h>

namespace Orlix {

class CCursor;
class CXMLParser;

/** What a data transfer tells its application, on the host thread and without a lock. Override what you want to hear.
 *
 *  Each operation may close the data transfer, open it again, or destroy it. Closing and destroying a server block
 *  until its client, if there is one that is silent, sends something or leaves. */
class ORLIX_API IDataTransferListener {
public:
    /** What is to happen to a page or a popup. The numbers belong to the layer that uses them and pass unchanged. */
    enum EOperationHandle : int {};

    virtual ~IDataTransferListener() = default;
    /** The connection came up. */
    virtual void onConnect() {}
    /** The connection went down, or an attempt to have one was given up. */
    virtual void onDisconnect() {}
    /** @param cursor valid for the call; what its document did not name is 0. */
    virtual void onTouchInputAvailable([[maybe_unused]] const CCursor& cursor) {}
    /** @param strPageName blank if the document did not name one. */
    virtual void onPageCMDAvailable([[maybe_unused]] EOperationHandle eHandle, [[maybe_unused]] CString strPageName) {}
    /** Never called: documents of this kind are dropped where they arrive. */
    virtual void onPopupCMDAvailable([[maybe_unused]] EOperationHandle eHandle, [[maybe_unused]] CString strPopupName) {
    }
    /** @param pParser a document with a root, still owned by the message and valid for the call. */
    virtual void onLogicDataAvailable([[maybe_unused]] CXMLParser* pParser) {}
    /** @param aryData a block of bytes, never empty; the array owns it, so whoever copies the array keeps it. */
    virtual void onLogicDataAvailable([[maybe_unused]] CArrayPtr<unsigned char> aryData) {}
};
} // namespace Orlix
