#include <Orlix/foundation/CObject.h>

#include <Orlix/foundation/CObjectPoolRef.h>

namespace Orlix {

void CObject::reset() {}

int CObject::release() {
    if (m_iRef <= 0)
        return m_iRef;
    const int iLeft = --m_iRef;
    if (iLeft != 0)
        return iLeft;
    if (m_pObjectPool)
        m_pObjectPool->recycleObject(this);
    else
        delete this;
    return 0;
}
} // namespace Orlix
