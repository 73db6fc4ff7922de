#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CObject;

/** A receiver of its own for one user message, after the center's listener. */
class ORLIX_API IMsgUserListener {
public:
    virtual ~IMsgUserListener() = default;
    /** On the host thread. @param pData valid for the call; add a reference to keep it. May be null. */
    virtual void onHandleUserMessage(unsigned int uiID, CObject* pData) = 0;
};
} // namespace Orlix
