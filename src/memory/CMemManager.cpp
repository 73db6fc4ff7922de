#include <Orlix/memory/CMemManager.h>

#include <Orlix/foundation/CAutoSync.h>
#include <Orlix/memory/CMemAllocator.h>
#include <Orlix/memory/IMemManagerListener.h>

#include "foundation/StaticOrder.h"
#include "memory/CImpHeap.h"

#include <cstdlib>
#include <new>

namespace Orlix {
namespace {

constexpr unsigned int POOL_ALIGNMENT = 4;
constexpr unsigned int POOL_COUNT = 64;

// Data size, initial count, grow count. Small blocks are the common case, so the small pools start large.
constexpr unsigned int g_aauiMemPoolUnit[POOL_COUNT][3] = {
    {8, 10000, 100}, {16, 10000, 100}, {24, 10000, 100}, {32, 10000, 100}, {40, 10000, 100}, {48, 10000, 100},
    {56, 5000, 100}, {64, 5000, 100},  {72, 5000, 100},  {80, 5000, 100},  {88, 5000, 100},  {96, 5000, 100},
    {104, 2000, 50}, {112, 2000, 50},  {120, 2000, 50},  {128, 2000, 50},  {136, 2000, 50},  {144, 2000, 50},
    {152, 1000, 50}, {160, 1000, 50},  {168, 1000, 50},  {176, 1000, 50},  {184, 1000, 50},  {192, 1000, 50},
    {200, 500, 20},  {208, 500, 20},   {216, 500, 20},   {224, 500, 20},   {232, 500, 20},   {240, 500, 20},
    {248, 500, 20},  {256, 200, 20},   {264, 200, 20},   {272, 200, 20},   {280, 200, 20},   {288, 200, 20},
    {296, 200, 20},  {304, 100, 10},   {312, 100, 10},   {320, 100, 10},   {328, 100, 10},   {336, 100, 10},
    {344, 100, 10},  {352, 100, 10},   {360, 100, 10},   {368, 100, 10},   {376, 100, 10},   {384, 100, 10},
    {392, 100, 10},  {400, 50, 5},     {408, 50, 5},     {416, 50, 5},     {424, 50, 5},     {432, 50, 5},
    {440, 50, 5},    {448, 50, 5},     {456, 20, 5},     {464, 20, 5},     {472, 20, 5},     {480, 20, 5},
    {488, 20, 5},    {496, 20, 5},     {504, 20, 5},     {512, 20, 5}};

bool s_bInitialized = false;
CMemManager g_memManager ORLIX_STATIC_MEM_MANAGER;
} // namespace

CMemManager::CMemManager() : m_pListener(nullptr), m_pAllocator(nullptr), m_pChecker(nullptr), m_bInRetry(false) {
    CImpHeap::mapLargeBlocks();
    // The flag is still clear, so the allocator itself is a block of the system heap, as is the lock's mutex.
    m_pAllocator = new CMemAllocator;
    if (m_pAllocator) {
        m_pAllocator->initialize(POOL_ALIGNMENT, POOL_COUNT);
        for (unsigned int i = 0; i < POOL_COUNT; ++i)
            m_pAllocator->createPool(i, g_aauiMemPoolUnit[i][0], g_aauiMemPoolUnit[i][1], g_aauiMemPoolUnit[i][2]);
    }
    s_bInitialized = true;
}

CMemManager::~CMemManager() {
    generateMemReportFile();
    if (m_pAllocator)
        m_pAllocator->unInitialize();
    // From here on CMemory is the system heap again, where the allocator and the lock's mutex came from.
    s_bInitialized = false;
    delete m_pAllocator;
}

CMemManager* CMemManager::getInstance() { return s_bInitialized ? &g_memManager : nullptr; }

void CMemManager::setListener(IMemManagerListener* pListener) { m_pListener = pListener; }

void* CMemManager::malloc(unsigned int uiSize, unsigned int) {
    void* const pBlock = allocate(uiSize);
    if (pBlock || !m_pListener || m_bInRetry)
        return pBlock;
    return retry(uiSize);
}

void* CMemManager::allocate(unsigned int uiSize) {
    return m_pAllocator ? m_pAllocator->malloc(uiSize) : std::malloc(uiSize);
}

void* CMemManager::retry(unsigned int uiSize) {
    const CAutoSync sync(m_syncRetry);
    if (!m_pListener)
        return nullptr;
    m_bInRetry = true;
    m_pListener->onMemoryShortage();
    void* const pBlock = allocate(uiSize);
    m_bInRetry = false;
    return pBlock;
}

void CMemManager::free(void* pBlock) {
    if (m_pAllocator)
        m_pAllocator->free(pBlock);
    else
        std::free(pBlock);
}

void* CMemManager::extend(void* pBlock, unsigned int uiSize) {
    // A checker keeps its own header in front of each block and has the neighbours' addresses in there.
    return m_pAllocator && !m_pChecker ? m_pAllocator->extend(pBlock, uiSize) : nullptr;
}

// The three below are the checker's; a build without one has nothing to number and nothing to report.
unsigned int CMemManager::registClassName(const wchar_t*) { return 0; }

void CMemManager::setMemReportFile(const CString&) {}

void CMemManager::generateMemReportFile() {}
} // namespace Orlix
