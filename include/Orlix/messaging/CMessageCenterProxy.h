#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

class CObject;
class CString;
class IMsgSystemListener;
class IMsgUserListener;

/** A narrow front of the message center for layers that may look but not post.
 *
 *  The push operations are inert on purpose: they do nothing and post nothing. Who is to post uses CMessageCenter.
 *  Threads: as the center's queries. */
class ORLIX_API CMessageCenterProxy {
public:
    static bool isCtrlKeyPress();
    static bool isShiftKeyPress();
    static bool isAltKeyPress();

    static void pushSystemMessage(unsigned int uiID, CObject* pData, IMsgSystemListener* pListener);
    static void pushGestureMessage(unsigned int uiParam, unsigned int uiID, CObject* pData);
    static void pushHardkeyMessage(unsigned int uiKey, unsigned int uiState);
    static void pushIMEMessage(const CString& strText);
    static void pushTouchMessage(unsigned int uiSurfaceID, unsigned int uiCursorID, int iX, int iY,
                                 unsigned int uiState);
    static void pushLogicEventMessage(unsigned int uiID);
    static void pushVoiceContentMessage(const CString& strContent);
    static void pushDataContextMessage(unsigned int uiID, CObject* pData);
    static void pushUserMessage(unsigned int uiID, CObject* pData, IMsgUserListener* pListener);
};
} // namespace Orlix
