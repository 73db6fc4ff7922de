#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CObject;
class CString;

/** The host as the receiver of its messages; override what you need.
 *
 *  Every operation but onMessageAvailable runs on the host thread, out of a message's handleMessage, without a lock.
 *  A pData is valid for the length of the call and may be null: add a reference to keep it. */
class ORLIX_API IMessageCenterListener {
public:
    virtual ~IMessageCenterListener() = default;

    /** The host is to leave its loop. */
    virtual void onHandleQuitMessage() {}
    /** @param uiID the render target. */
    virtual void onHandleRenderMessage([[maybe_unused]] unsigned int uiID) {}
    virtual void onHandleLogicEventMessage([[maybe_unused]] unsigned int uiID) {}
    virtual void onHandleVoiceContentMessage([[maybe_unused]] const CString& strContent) {}
    virtual void onHandleSystemMessage([[maybe_unused]] unsigned int uiID, [[maybe_unused]] CObject* pData) {}
    virtual void onHandleGestureMessage([[maybe_unused]] unsigned int uiParam, [[maybe_unused]] unsigned int uiID,
                                        [[maybe_unused]] CObject* pData) {}
    /** @param uiState 1 to 3 for a key that is down, 4 and 5 for one that is up. */
    virtual void onHandleHardkeyMessage([[maybe_unused]] unsigned int uiKey, [[maybe_unused]] unsigned int uiState) {}
    virtual void onHandleIMEMessage([[maybe_unused]] const CString& strText) {}
    virtual void onHandleDataContextMessage([[maybe_unused]] unsigned int uiID, [[maybe_unused]] CObject* pData) {}
    virtual void onHandleUserMessage([[maybe_unused]] unsigned int uiID, [[maybe_unused]] CObject* pData) {}

    /** Something was pushed, also when it was merged or dropped. Called on the pushing thread without a lock: wake the
     *  host and return. */
    virtual void onMessageAvailable() {}
};
} // namespace Orlix
