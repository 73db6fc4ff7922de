#include <Orlix/messaging/CMsgQuit.h>

#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

namespace Orlix {

CMsgQuit::CMsgQuit() : CBaseMessage(MESSAGE_QUIT) {}

CMsgQuit::~CMsgQuit() = default;

void CMsgQuit::handleMessage() {
    if (IMessageCenterListener* const pListener = CMessageCenter::getInstance()->getListener())
        pListener->onHandleQuitMessage();
}
} // namespace Orlix
