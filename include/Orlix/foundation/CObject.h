#pragma once

#include <Orlix/foundation/OrlixApi.h>
#include <Orlix/memory/CMemory.h>

#include <atomic>
#include <cstddef>

/** Gives a class its operators new and delete, single and array, which take the memory route under the class's name:
 *  ORLIX_HEAP_CLASS(L"COuter::tagInner"). With no memory the operator gives null and no constructor runs.
 *
 *  The number is atomic only because two threads may allocate the first object at once; both then register the same
 *  name and store the same number. The operators hide the global placement form: containers write ::new (pSlot) T. */
#define ORLIX_HEAP_CLASS(NAME)                                                                                         \
public:                                                                                                                \
    static void* operator new(std::size_t uiSize) noexcept {                                                           \
        static std::atomic<unsigned int> s_uiClassID{0};                                                               \
        return ::Orlix::CMemory::mallocForClass(uiSize, s_uiClassID, NAME);                                            \
    }                                                                                                                  \
    static void* operator new[](std::size_t uiSize) noexcept { return operator new(uiSize); }                          \
    static void operator delete(void* pBlock) noexcept {                                                               \
        if (pBlock)                                                                                                    \
            ::Orlix::CMemory::free(pBlock);                                                                            \
    }                                                                                                                  \
    static void operator delete[](void* pBlock) noexcept { operator delete(pBlock); }

namespace Orlix {

class CObjectPoolRef;

/** Root of the library's classes: a reference count and the class-tagged memory route.
 *
 *  An object is either shared by references (the last release deletes it) or owned outright: a member, a local, an
 *  element of an owning container. Then its count stays 0 and its owner deletes it.
 *  Threads: the count is deliberately not atomic. Share an object within one thread, or hand it over whole. */
class ORLIX_API CObject {
    ORLIX_HEAP_CLASS(L"CObject")

public:
    CObject() noexcept : m_iRef(0), m_pObjectPool(nullptr) {}
    /** A copy is an object of its own: it starts without references and without a pool. */
    CObject(const CObject&) noexcept : CObject() {}
    CObject& operator=(const CObject&) noexcept { return *this; }

    /** Does not look at the count. */
    virtual ~CObject() = default;

    /** Brings a pooled object back to its first state; does nothing unless a class says otherwise. */
    virtual void reset();

    /** Adds one reference. */
    void addRef() noexcept { ++m_iRef; }

    /** Drops one reference. With the last one the object goes to its pool, or without a pool is deleted.
     *  @return the references left. An object without references stays as it is. */
    int release();

    /** @return the references held; 0 for an object that is owned outright. */
    int getRef() const noexcept { return m_iRef; }

    /** @param pPool takes the object back when its last reference goes; not owned, null for none. */
    void setObjectPool(CObjectPoolRef* pPool) noexcept { m_pObjectPool = pPool; }

protected:
    int m_iRef;
    CObjectPoolRef* m_pObjectPool; // not owned
};
} // namespace Orlix
