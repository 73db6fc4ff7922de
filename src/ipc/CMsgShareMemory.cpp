#include <Orlix/ipc/CMsgShareMemory.h>

#include <Orlix/ipc/CShareMemory.h>

namespace Orlix {

CMsgShareMemory::CMsgShareMemory(CShareMemory* pShareMemory)
    : CBaseMessage(MESSAGE_SHARE_MEMORY, pShareMemory ? pShareMemory->getID() : 0), m_pShareMemory(pShareMemory) {}

CMsgShareMemory::~CMsgShareMemory() = default;

void CMsgShareMemory::handleMessage() {
    if (m_pShareMemory)
        m_pShareMemory->handleShareMemoryMessage();
}
} // namespace Orlix
