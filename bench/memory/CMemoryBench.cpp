// Allocating and freeing blocks of 8 to 512 bytes: pairs, batches of 1000, and both from two threads at once.
//
// Left out: what a heap costs that has grown old and fragmented.
#include <Orlix/memory/CMemory.h>

#include "support/CFloorHeap.h"

#include <benchmark/benchmark.h>

#include <dlfcn.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory_resource>
#include <string>

using Orlix::CMemory;

namespace {

constexpr std::size_t BATCH = 1000;

struct OrlixHeap {
    static void* allocate(std::size_t uiSize) { return CMemory::malloc(static_cast<unsigned int>(uiSize), 0); }
    static void release(void* pBlock, std::size_t) { CMemory::free(pBlock); }
};

struct Glibc {
    static void* allocate(std::size_t uiSize) { return std::malloc(uiSize); }
    static void release(void* pBlock, std::size_t) { std::free(pBlock); }
};

/** A heap that would take the place of the C library's if it were linked, so it is loaded beside it. */
struct tagLoadedHeap {
    typedef void* (*FMalloc)(std::size_t);
    typedef void (*FFree)(void*);
    FMalloc pMalloc;
    FFree pFree;

    tagLoadedHeap(const char* pLibrary, const char* pMallocName, const char* pFreeName) {
        void* const pHandle = dlopen(pLibrary, RTLD_NOW | RTLD_LOCAL | RTLD_DEEPBIND);
        if (!pHandle) {
            std::fprintf(stderr, "%s\n", dlerror());
            std::exit(1);
        }
        pMalloc = reinterpret_cast<FMalloc>(dlsym(pHandle, pMallocName));
        pFree = reinterpret_cast<FFree>(dlsym(pHandle, pFreeName));
    }
};

const tagLoadedHeap g_heapMimalloc("libmimalloc.so.2", "mi_malloc", "mi_free");
const tagLoadedHeap g_heapJemalloc("libjemalloc.so.2", "malloc", "free");

struct Mimalloc {
    static void* allocate(std::size_t uiSize) { return g_heapMimalloc.pMalloc(uiSize); }
    static void release(void* pBlock, std::size_t) { g_heapMimalloc.pFree(pBlock); }
};

struct Jemalloc {
    static void* allocate(std::size_t uiSize) { return g_heapJemalloc.pMalloc(uiSize); }
    static void release(void* pBlock, std::size_t) { g_heapJemalloc.pFree(pBlock); }
};

struct PmrPool {
    static void* allocate(std::size_t uiSize) { return pool().allocate(uiSize); }
    static void release(void* pBlock, std::size_t uiSize) { pool().deallocate(pBlock, uiSize); }

    static std::pmr::synchronized_pool_resource& pool() {
        static std::pmr::synchronized_pool_resource s_pool;
        return s_pool;
    }
};

struct Floor {
    static void* allocate(std::size_t uiSize) { return CFloorHeap::allocate(uiSize); }
    static void release(void* pBlock, std::size_t) { CFloorHeap::release(pBlock); }
};

template <class THeap> void pairs(benchmark::State& state) {
    const std::size_t uiSize = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        void* pBlock = THeap::allocate(uiSize);
        benchmark::DoNotOptimize(pBlock);
        THeap::release(pBlock, uiSize);
    }
    state.SetItemsProcessed(state.iterations());
}

template <class THeap> void batches(benchmark::State& state) {
    const std::size_t uiSize = static_cast<std::size_t>(state.range(0));
    void* aryBlock[BATCH];
    for (auto _ : state) {
        for (void*& pBlock : aryBlock)
            pBlock = THeap::allocate(uiSize);
        benchmark::DoNotOptimize(aryBlock);
        for (void* pBlock : aryBlock)
            THeap::release(pBlock, uiSize);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(BATCH));
}

template <class THeap> void registerHeap(const char* pName) {
    const std::string strName(pName);
    for (const int iThreads : {1, 2}) {
        for (const int iSize : {8, 64, 512}) {
            benchmark::RegisterBenchmark((strName + "_pair").c_str(), pairs<THeap>)->Arg(iSize)->Threads(iThreads);
            benchmark::RegisterBenchmark((strName + "_batch").c_str(), batches<THeap>)->Arg(iSize)->Threads(iThreads);
        }
    }
}

const bool g_bRegistered = [] {
    registerHeap<OrlixHeap>("CMemory");
    registerHeap<Floor>("Floor");
    registerHeap<Glibc>("Glibc");
    registerHeap<Mimalloc>("Mimalloc");
    registerHeap<Jemalloc>("Jemalloc");
    registerHeap<PmrPool>("PmrPool");
    return true;
}();
} // namespace
