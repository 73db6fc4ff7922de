#pragma once

#include <Orlix/foundation/OrlixApi.h>

#include <atomic>
#include <cstddef>

namespace Orlix {

/** The library's only way to the heap: every object, string buffer and array goes through here.
 *
 *  While the memory manager lives (from the library's static construction to its static destruction) blocks come
 *  from its pools, otherwise straight from the system heap. Threads: any operation from any thread. */
class ORLIX_API CMemory {
public:
    /** Takes a block, aligned to 8 bytes. On a shortage the manager's listener is called once, on this thread.
     *  @param uiSize bytes; 0 gives a block too.
     *  @param uiClassID number of the class the block is for, from registClassName; 0 for plain buffers.
     *  @return the block, to be given back with free; null when there is no memory. */
    static void* malloc(unsigned int uiSize, unsigned int uiClassID);

    /** Gives a block back. @param pBlock a block of malloc, never null: what precedes it is read without a test.
     *  A block that is foreign or was freed before is reported on standard output and left alone. */
    static void free(void* pBlock);

    /** Makes a large block larger without copying it, where the system can do that: the short way for a block that
     *  grows often, not a way to change any block. What a block held stays; the rest is as it comes.
     *  @param pBlock a block of malloc, never null. @param uiSize bytes, no less than it has.
     *  @return the block, which may have moved; null, and it stays as it was, for one that is or would be a pool's,
     *  without a manager, under a memory checker, and without memory: then take another one with malloc and copy. */
    static void* extend(void* pBlock, unsigned int uiSize);

    /** The number under which the memory checker accounts for a class; the same for the same name.
     *  @return 0 when no checker is attached. */
    static unsigned int registClassName(const wchar_t* pName);

    /** What the class-level operator new of ORLIX_HEAP_CLASS does: registers the class while it has no number,
     *  then takes the block. @param uiClassID the class's number, kept by the caller between calls.
     *  @return null without memory, or for a size that does not fit 32 bits. */
    static void* mallocForClass(std::size_t uiSize, std::atomic<unsigned int>& uiClassID, const wchar_t* pName);
};
} // namespace Orlix
