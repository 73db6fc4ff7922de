#include <Orlix/memory/CMemory.h>

#include <Orlix/memory/CMemManager.h>

#include <climits>
#include <cstdlib>

namespace Orlix {

void* CMemory::malloc(unsigned int uiSize, unsigned int uiClassID) {
    CMemManager* const pManager = CMemManager::getInstance();
    return pManager ? pManager->malloc(uiSize, uiClassID) : std::malloc(uiSize);
}

void CMemory::free(void* pBlock) {
    if (CMemManager* const pManager = CMemManager::getInstance())
        pManager->free(pBlock);
    else
        std::free(pBlock);
}

void* CMemory::extend(void* pBlock, unsigned int uiSize) {
    CMemManager* const pManager = CMemManager::getInstance();
    return pManager ? pManager->extend(pBlock, uiSize) : nullptr;
}

unsigned int CMemory::registClassName(const wchar_t* pName) {
    CMemManager* const pManager = CMemManager::getInstance();
    return pManager ? pManager->registClassName(pName) : 0;
}

void* CMemory::mallocForClass(std::size_t uiSize, std::atomic<unsigned int>& uiClassID, const wchar_t* pName) {
    if (uiSize > UINT_MAX)
        return nullptr;
    unsigned int uiID = uiClassID.load(std::memory_order_relaxed);
    if (uiID == 0) {
        // Without a checker every class stays 0 and asks again; only a number is worth a store.
        uiID = registClassName(pName);
        if (uiID != 0)
            uiClassID.store(uiID, std::memory_order_relaxed);
    }
    return malloc(static_cast<unsigned int>(uiSize), uiID);
}
} // namespace Orlix
