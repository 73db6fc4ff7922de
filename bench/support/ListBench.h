#pragma once

#include "support/CFloorHeap.h"

#include <benchmark/benchmark.h>

#include <QList>

#include <cstdint>
#include <list>
#include <string>

// What the benchmarks of both lists share: a queue of a fixed length, at which each step appends one element and takes
// the first one out, and the filling and emptying of a list.

/** Without classes, the links of the list: one node of the floor heap per element. */
template <class T> class CFloorList {
public:
    ~CFloorList() {
        while (m_pHead)
            removeHead();
    }

    void add(T tValue) {
        tagNode* const pNode = static_cast<tagNode*>(CFloorHeap::allocate(sizeof(tagNode)));
        pNode->tValue = tValue;
        pNode->pPrev = m_pTail;
        pNode->pNext = nullptr;
        (m_pTail ? m_pTail->pNext : m_pHead) = pNode;
        m_pTail = pNode;
        ++m_uiSize;
    }

    T removeHead() {
        tagNode* const pNode = m_pHead;
        const T tValue = pNode->tValue;
        m_pHead = pNode->pNext;
        (m_pHead ? m_pHead->pPrev : m_pTail) = nullptr;
        --m_uiSize;
        CFloorHeap::release(pNode);
        return tValue;
    }

private:
    struct tagNode {
        T tValue;
        tagNode* pPrev;
        tagNode* pNext;
    };
    tagNode* m_pHead = nullptr;
    tagNode* m_pTail = nullptr;
    unsigned int m_uiSize = 0;
};

template <class T> class CStdList {
public:
    void add(T tValue) { m_list.push_back(tValue); }
    T removeHead() {
        const T tValue = m_list.front();
        m_list.pop_front();
        return tValue;
    }

private:
    std::list<T> m_list;
};

template <class T> class CQtList {
public:
    void add(T tValue) { m_list.append(tValue); }
    T removeHead() { return m_list.takeFirst(); }

private:
    QList<T> m_list;
};

template <class TList, class T> void queueSteps(benchmark::State& state) {
    TList tested;
    for (std::int64_t i = 1; i < state.range(0); ++i)
        tested.add(T());
    T tValue = T();
    benchmark::DoNotOptimize(tValue);
    for (auto _ : state) {
        tested.add(tValue);
        benchmark::DoNotOptimize(tested);
        benchmark::DoNotOptimize(tested.removeHead());
    }
}

template <class TList, class T> void fillAndEmpty(benchmark::State& state) {
    T tValue = T();
    benchmark::DoNotOptimize(tValue);
    for (auto _ : state) {
        TList tested;
        for (std::int64_t i = 0; i < state.range(0); ++i)
            tested.add(tValue);
        benchmark::DoNotOptimize(tested);
        for (std::int64_t i = 0; i < state.range(0); ++i)
            benchmark::DoNotOptimize(tested.removeHead());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class TList, class T> void registerList(const std::string& strName) {
    for (const int iCount : {1, 16, 1000}) {
        benchmark::RegisterBenchmark((strName + "_addRemoveHead").c_str(), queueSteps<TList, T>)->Arg(iCount);
        benchmark::RegisterBenchmark((strName + "_fillAndEmpty").c_str(), fillAndEmpty<TList, T>)->Arg(iCount);
    }
}

template <class TList, class T> bool registerLists(const std::string& strName) {
    registerList<TList, T>(strName);
    registerList<CFloorList<T>, T>("Floor");
    registerList<CStdList<T>, T>("StdList");
    registerList<CQtList<T>, T>("QList");
    return true;
}
