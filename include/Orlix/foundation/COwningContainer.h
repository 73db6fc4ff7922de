#pragma once

#include <Orlix/foundation/CObject.h>

namespace Orlix {

/** What the containers of objects have in common: whether they delete the objects they hold. */
class ORLIX_API COwningContainer : public CObject {
    ORLIX_HEAP_CLASS(L"COwningContainer")

public:
    COwningContainer() noexcept : m_bOwn(true) {}

    /** @param bOwn true (the state at first): objects are deleted with their removal, directly and not by release. */
    void setOwn(bool bOwn) noexcept { m_bOwn = bOwn; }
    bool isOwn() const noexcept { return m_bOwn; }

protected:
    bool m_bOwn;

    template <class T> void deleteIfOwned(T* pObject) {
        if (m_bOwn && pObject)
            delete pObject;
    }
};
} // namespace Orlix
