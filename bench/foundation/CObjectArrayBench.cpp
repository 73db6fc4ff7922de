// Filling arrays of pointers that they do not own, so that it is the array alone that is measured.
//
// The floor does the growth steps of the array, each with one block of the floor heap whose spare slots are cleared.
// Reading and searching are CDataArray's.
#include <Orlix/foundation/CObjectArray.h>

#include "support/CFloorHeap.h"
#include "support/KeepHeap.h"

#include <benchmark/benchmark.h>

#include <QList>

#include <cstring>
#include <string>
#include <vector>

namespace {

int g_iObject;

struct OrlixArray {
    Orlix::CObjectArray<int> array;
    OrlixArray() { array.setOwn(false); }
    void add(int* pObject) { array.add(pObject); }
};

struct StdVector {
    std::vector<int*> array;
    void add(int* pObject) { array.push_back(pObject); }
};

struct QtList {
    QList<int*> array;
    void add(int* pObject) { array.append(pObject); }
};

template <class TArray> void fill(benchmark::State& state) {
    const int iCount = static_cast<int>(state.range(0));
    for (auto _ : state) {
        TArray tested;
        for (int i = 0; i < iCount; ++i)
            tested.add(&g_iObject);
        benchmark::DoNotOptimize(tested);
    }
}

void fillFloor(benchmark::State& state) {
    const unsigned int uiCount = static_cast<unsigned int>(state.range(0));
    for (auto _ : state) {
        int** ppData = nullptr;
        unsigned int uiCapacity = 0;
        for (unsigned int i = 0; i < uiCount; ++i) {
            if (i == uiCapacity) {
                uiCapacity = (uiCapacity * 3 >> 1) + 1;
                int** const ppGrown = static_cast<int**>(CFloorHeap::allocate(uiCapacity * sizeof(int*)));
                std::memset(ppGrown + i, 0, (uiCapacity - i) * sizeof(int*));
                if (ppData) {
                    std::memcpy(ppGrown, ppData, i * sizeof(int*));
                    CFloorHeap::release(ppData);
                }
                ppData = ppGrown;
            }
            ppData[i] = &g_iObject;
        }
        benchmark::DoNotOptimize(ppData);
        benchmark::ClobberMemory();
        CFloorHeap::release(ppData);
    }
}

void registerFill(const std::string& strName, void (*pFill)(benchmark::State&)) {
    for (const int iCount : {1, 2, 4, 8, 16, 100000})
        benchmark::RegisterBenchmark((strName + "_fill").c_str(), pFill)->Arg(iCount);
}

const bool g_bRegistered = [] {
    keepHeap();
    registerFill("CObjectArray", fill<OrlixArray>);
    registerFill("Floor", fillFloor);
    registerFill("StdVector", fill<StdVector>);
    registerFill("QList", fill<QtList>);
    return true;
}();
} // namespace
