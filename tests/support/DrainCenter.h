#pragma once

#include <Orlix/messaging/CMessageCenter.h>

namespace OrlixTest {

/** What the host does until nothing waits. @return the messages handled. */
inline unsigned int drainCenter() {
    for (unsigned int uiMessages = 0;; ++uiMessages) {
        const Orlix::CObjectPtr<Orlix::CBaseMessage> ptrMessage = Orlix::CMessageCenter::getInstance()->popMessage();
        if (ptrMessage.isEmpty())
            return uiMessages;
        ptrMessage->handleMessage();
    }
}
} // namespace OrlixTest
