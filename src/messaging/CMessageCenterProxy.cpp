#include <Orlix/messaging/CMessageCenterProxy.h>

#include <Orlix/messaging/CMessageCenter.h>

namespace Orlix {

bool CMessageCenterProxy::isCtrlKeyPress() { return CMessageCenter::getInstance()->isCtrlKeyPress(); }

bool CMessageCenterProxy::isShiftKeyPress() { return CMessageCenter::getInstance()->isShiftKeyPress(); }

bool CMessageCenterProxy::isAltKeyPress() { return CMessageCenter::getInstance()->isAltKeyPress(); }

// Empty on purpose: holders of the front must not post.
void CMessageCenterProxy::pushSystemMessage(unsigned int, CObject*, IMsgSystemListener*) {}
void CMessageCenterProxy::pushGestureMessage(unsigned int, unsigned int, CObject*) {}
void CMessageCenterProxy::pushHardkeyMessage(unsigned int, unsigned int) {}
void CMessageCenterProxy::pushIMEMessage(const CString&) {}
void CMessageCenterProxy::pushTouchMessage(unsigned int, unsigned int, int, int, unsigned int) {}
void CMessageCenterProxy::pushLogicEventMessage(unsigned int) {}
void CMessageCenterProxy::pushVoiceContentMessage(const CString&) {}
void CMessageCenterProxy::pushDataContextMessage(unsigned int, CObject*) {}
void CMessageCenterProxy::pushUserMessage(unsigned int, CObject*, IMsgUserListener*) {}
} // namespace Orlix
