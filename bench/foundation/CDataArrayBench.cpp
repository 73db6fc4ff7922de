// Filling, reading and searching arrays of ints: the short ones that the library is full of, and a long one.
//
// The floor does the growth steps of the array, each with one block of the floor heap, without classes.
// Reading tests the index everywhere, as the array always does.
// Left out: elements with constructors, whose own cost hides the array's.
#include <Orlix/foundation/CDataArray.h>

#include "support/CFloorHeap.h"
#include "support/KeepHeap.h"

#include <benchmark/benchmark.h>

#include <QList>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

struct OrlixArray {
    Orlix::CDataArray<int> array;
    void add(int iValue) { array.add(iValue); }
    int getAt(int iIndex) const { return array[static_cast<unsigned int>(iIndex)]; }
    int find(int iValue) const { return array.find(iValue); }
};

struct StdVector {
    std::vector<int> array;
    void add(int iValue) { array.push_back(iValue); }
    int getAt(int iIndex) const { return array.at(static_cast<std::size_t>(iIndex)); }
    int find(int iValue) const {
        const auto it = std::find(array.begin(), array.end(), iValue);
        return it == array.end() ? -1 : static_cast<int>(it - array.begin());
    }
};

struct QtList {
    QList<int> array;
    void add(int iValue) { array.append(iValue); }
    int getAt(int iIndex) const { return array.value(iIndex); }
    int find(int iValue) const { return static_cast<int>(array.indexOf(iValue)); }
};

template <class TArray> void fill(benchmark::State& state) {
    const int iCount = static_cast<int>(state.range(0));
    for (auto _ : state) {
        TArray tested;
        for (int i = 0; i < iCount; ++i)
            tested.add(i);
        benchmark::DoNotOptimize(tested);
    }
}

void fillFloor(benchmark::State& state) {
    const unsigned int uiCount = static_cast<unsigned int>(state.range(0));
    for (auto _ : state) {
        int* pData = nullptr;
        unsigned int uiCapacity = 0;
        for (unsigned int i = 0; i < uiCount; ++i) {
            if (i == uiCapacity) {
                uiCapacity = (uiCapacity * 3 >> 1) + 1;
                int* const pGrown = static_cast<int*>(CFloorHeap::allocate(uiCapacity * sizeof(int)));
                if (pData) {
                    std::memcpy(pGrown, pData, i * sizeof(int));
                    CFloorHeap::release(pData);
                }
                pData = pGrown;
            }
            pData[i] = static_cast<int>(i);
        }
        benchmark::DoNotOptimize(pData);
        benchmark::ClobberMemory();
        CFloorHeap::release(pData);
    }
}

template <class TArray> void read(benchmark::State& state) {
    const int iCount = static_cast<int>(state.range(0));
    TArray tested;
    for (int i = 0; i < iCount; ++i)
        tested.add(i);
    for (auto _ : state) {
        benchmark::DoNotOptimize(tested);
        int iSum = 0;
        for (int i = 0; i < iCount; ++i)
            iSum ^= tested.getAt(i);
        benchmark::DoNotOptimize(iSum);
    }
}

template <class TArray> void find(benchmark::State& state) {
    const int iCount = static_cast<int>(state.range(0));
    TArray tested;
    for (int i = 0; i < iCount; ++i)
        tested.add(i);
    int iWanted = iCount - 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(tested);
        benchmark::DoNotOptimize(iWanted);
        benchmark::DoNotOptimize(tested.find(iWanted));
    }
}

template <class TArray> void registerArray(const std::string& strName) {
    for (const int iCount : {1, 2, 4, 8, 16, 100000})
        benchmark::RegisterBenchmark((strName + "_fill").c_str(), fill<TArray>)->Arg(iCount);
    for (const int iCount : {16, 100000}) {
        benchmark::RegisterBenchmark((strName + "_read").c_str(), read<TArray>)->Arg(iCount);
        benchmark::RegisterBenchmark((strName + "_find").c_str(), find<TArray>)->Arg(iCount);
    }
}

const bool g_bRegistered = [] {
    keepHeap();
    registerArray<OrlixArray>("CDataArray");
    for (const int iCount : {1, 2, 4, 8, 16, 100000})
        benchmark::RegisterBenchmark("Floor_fill", fillFloor)->Arg(iCount);
    registerArray<StdVector>("StdVector");
    registerArray<QtList>("QList");
    return true;
}();
} // namespace
