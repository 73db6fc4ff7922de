#pragma once

#include <Orlix/foundation/OrlixApi.h>

namespace Orlix {

/** Holds one reference to an object as long as it points to it.
 *
 *  Threads: none of its own; the object's count is not atomic. Ownership: with its last reference the object goes to
 *  its pool, or is deleted. */
template <class T> class ORLIX_API CObjectPtr {
public:
    CObjectPtr() noexcept : m_pObject(nullptr) {}
    /** @param pObject gets one more reference; null points nowhere. */
    CObjectPtr(T* pObject) noexcept : m_pObject(pObject) { // implicit on purpose: functions return plain pointers
        if (m_pObject)
            m_pObject->addRef();
    }
    CObjectPtr(const CObjectPtr& ptrOther) noexcept : CObjectPtr(ptrOther.m_pObject) {}
    CObjectPtr(CObjectPtr&& ptrOther) noexcept : m_pObject(ptrOther.m_pObject) { ptrOther.m_pObject = nullptr; }

    virtual ~CObjectPtr() {
        if (m_pObject)
            m_pObject->release();
    }

    /** References the new object before it releases the old one, which may own the new. */
    CObjectPtr& operator=(T* pObject) {
        if (pObject == m_pObject)
            return *this;
        if (pObject)
            pObject->addRef();
        T* const pOld = m_pObject;
        m_pObject = pObject;
        if (pOld)
            pOld->release();
        return *this;
    }
    CObjectPtr& operator=(const CObjectPtr& ptrOther) { return *this = ptrOther.m_pObject; }
    CObjectPtr& operator=(CObjectPtr&& ptrOther) {
        if (this == &ptrOther)
            return *this;
        T* const pOld = m_pObject;
        m_pObject = ptrOther.m_pObject;
        ptrOther.m_pObject = nullptr;
        if (pOld)
            pOld->release();
        return *this;
    }

    /** Only while it points to an object. */
    T* operator->() const noexcept { return m_pObject; }
    T& operator*() const noexcept { return *m_pObject; }

    /** The object without a new reference; null when empty. */
    T* getPtr() const noexcept { return m_pObject; }
    bool isEmpty() const noexcept { return m_pObject == nullptr; }
    explicit operator bool() const noexcept { return m_pObject != nullptr; }
    bool operator==(const T* pObject) const noexcept { return m_pObject == pObject; }
    bool operator!=(const T* pObject) const noexcept { return m_pObject != pObject; }

protected:
    T* m_pObject; // not null only while a reference on it is held
};
} // namespace Orlix
