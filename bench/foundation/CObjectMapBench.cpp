// Filling, searching, walking and emptying maps of numbers and of wide texts of 16 characters, all in random order.
//
// A walk of ours builds its array of pairs and then reads it. The floor is what the order of allocations costs: a node
// and for texts the copied key, taken from and given back to CMemory one by one, without any tree.
// QMap has QString for its texts, whose copies share one buffer. Left out: owned values and their deletion.
#include <Orlix/foundation/CObjectMap.h>

#include <absl/container/btree_map.h>
#include <benchmark/benchmark.h>

#include <QMap>
#include <QString>

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using namespace Orlix;

namespace {

constexpr unsigned int TEXT_LENGTH = 16;

/** The key of a number: distinct for distinct numbers, in no order. */
unsigned int scatter(unsigned int uiNumber) { return uiNumber * 2654435761u; }

void makeKey(unsigned int uiNumber, int& iKey) { iKey = static_cast<int>(scatter(uiNumber)); }
void makeKey(unsigned int uiNumber, std::wstring& strKey) {
    strKey.assign(TEXT_LENGTH, L'x');
    unsigned int uiRest = scatter(uiNumber);
    for (unsigned int i = 0; i < 8; ++i, uiRest >>= 4)
        strKey[i] = static_cast<wchar_t>(L'a' + (uiRest & 15));
}
void makeKey(unsigned int uiNumber, CString& strKey) {
    std::wstring strText;
    makeKey(uiNumber, strText);
    strKey = strText.c_str();
}
void makeKey(unsigned int uiNumber, QString& strKey) {
    std::wstring strText;
    makeKey(uiNumber, strText);
    strKey = QString::fromStdWString(strText);
}

/** Keys and an order to take them in, which is a new one for every round: the same one over and over is what a branch
 *  predictor learns by heart. */
template <class K> class CKeys {
public:
    explicit CKeys(const benchmark::State& state) : m_vecKey(static_cast<std::size_t>(state.range(0))) {
        for (unsigned int i = 0; i < m_vecKey.size(); ++i)
            makeKey(i, m_vecKey[i]);
        m_vecOrder.resize(m_vecKey.size());
        std::iota(m_vecOrder.begin(), m_vecOrder.end(), 0u);
    }
    void shuffle() { std::shuffle(m_vecOrder.begin(), m_vecOrder.end(), m_random); }
    template <class F> void forEach(F fnVisit) const {
        for (const unsigned int uiIndex : m_vecOrder)
            fnVisit(m_vecKey[uiIndex]);
    }

private:
    std::vector<K> m_vecKey;
    std::vector<unsigned int> m_vecOrder;
    std::mt19937 m_random;
};

int g_iValue = 1; // what all values point to

template <class K, class C> struct Ours {
    using TKey = K;
    Ours() { m_map.setOwn(false); }
    void insert(const K& key) { m_map.addItem(key, &g_iValue); }
    int* find(const K& key) { return m_map.getItem(key); }
    void erase(const K& key) { m_map.deleteItem(key); }
    void clear() { m_map.clear(); }
    template <class F> void walk(F fnVisit) {
        const unsigned int uiCount = m_map.buildPairs();
        for (unsigned int i = 0; i < uiCount; ++i)
            fnVisit(m_map.getKeyAt(i), m_map.getValueAt(i));
    }
    CObjectMap<K, int, C> m_map;
};

template <class TMap> struct Standard {
    using TKey = typename TMap::key_type;
    void insert(const TKey& key) { m_map.emplace(key, &g_iValue); }
    int* find(const TKey& key) { return m_map.find(key)->second; }
    void erase(const TKey& key) { m_map.erase(key); }
    void clear() { m_map.clear(); }
    template <class F> void walk(F fnVisit) {
        for (const auto& [key, pValue] : m_map)
            fnVisit(key, pValue);
    }
    TMap m_map;
};

template <class K> struct Qt {
    using TKey = K;
    void insert(const K& key) { m_map.insert(key, &g_iValue); }
    int* find(const K& key) { return m_map.constFind(key).value(); }
    void erase(const K& key) { m_map.remove(key); }
    void clear() { m_map.clear(); }
    template <class F> void walk(F fnVisit) {
        for (auto it = m_map.constBegin(); it != m_map.constEnd(); ++it)
            fnVisit(it.key(), it.value());
    }
    QMap<K, int*> m_map;
};

/** The blocks that a map would take, in the order of their keys, and nothing to find them by. */
template <class K, class C> struct Floor {
    using TKey = K;
    void insert(const K& key) {
        m_vecNode.push_back(CMemory::malloc(sizeof(typename CObjectMap<K, int, C>::tagNode), 0));
        ::new (m_vecNode.back()) K(key);
    }
    void erase(const K&) {
        static_cast<K*>(m_vecNode.back())->~K();
        CMemory::free(m_vecNode.back());
        m_vecNode.pop_back();
    }
    void clear() {
        while (!m_vecNode.empty())
            erase(K());
    }
    std::vector<void*> m_vecNode;
};

template <class T> void insert(benchmark::State& state) {
    CKeys<typename T::TKey> keys(state);
    T tested;
    for (auto _ : state) {
        state.PauseTiming();
        tested.clear();
        keys.shuffle();
        state.ResumeTiming();
        keys.forEach([&](const auto& key) { tested.insert(key); });
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class T> void erase(benchmark::State& state) {
    CKeys<typename T::TKey> keys(state);
    T tested;
    for (auto _ : state) {
        state.PauseTiming();
        keys.forEach([&](const auto& key) { tested.insert(key); });
        keys.shuffle();
        state.ResumeTiming();
        keys.forEach([&](const auto& key) { tested.erase(key); });
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

template <class T> void find(benchmark::State& state) {
    CKeys<typename T::TKey> keys(state);
    T tested;
    keys.shuffle();
    keys.forEach([&](const auto& key) { tested.insert(key); });
    for (auto _ : state) {
        state.PauseTiming();
        keys.shuffle();
        state.ResumeTiming();
        keys.forEach([&](const auto& key) { benchmark::DoNotOptimize(tested.find(key)); });
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

int readKey(int iKey) { return iKey; }
int readKey(const std::wstring& strKey) { return static_cast<int>(strKey.size()); }
int readKey(const CString& strKey) { return static_cast<int>(strKey.length()); }
int readKey(const QString& strKey) { return static_cast<int>(strKey.size()); }

template <class T> void walk(benchmark::State& state) {
    CKeys<typename T::TKey> keys(state);
    T tested;
    keys.shuffle();
    keys.forEach([&](const auto& key) { tested.insert(key); });
    for (auto _ : state) {
        unsigned int uiSum = 0;
        tested.walk([&](const typename T::TKey& key, const int* pValue) {
            uiSum += static_cast<unsigned int>(readKey(key) ^ *pValue);
        });
        benchmark::DoNotOptimize(uiSum);
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void registerSizes(const std::string& strName, void (*fnBench)(benchmark::State&)) {
    benchmark::RegisterBenchmark(strName.c_str(), fnBench)->RangeMultiplier(10)->Range(1000, 100000);
}

template <class T> void registerChanges(const std::string& strName, const std::string& strKeys) {
    registerSizes(strName + "_insert" + strKeys, insert<T>);
    registerSizes(strName + "_erase" + strKeys, erase<T>);
}

template <class T> void registerMap(const std::string& strName, const std::string& strKeys) {
    registerChanges<T>(strName, strKeys);
    registerSizes(strName + "_find" + strKeys, find<T>);
    registerSizes(strName + "_walk" + strKeys, walk<T>);
}

const bool g_bRegistered = [] {
    registerMap<Ours<int, tagNumCompare<int>>>("CObjectMap", "Numbers");
    registerChanges<Floor<int, tagNumCompare<int>>>("Floor", "Numbers");
    registerMap<Standard<std::map<int, int*>>>("StdMap", "Numbers");
    registerMap<Standard<absl::btree_map<int, int*>>>("AbslBtree", "Numbers");
    registerMap<Qt<int>>("QMap", "Numbers");
    registerMap<Ours<CString, tagStringCompare>>("CObjectMap", "Texts");
    registerChanges<Floor<CString, tagStringCompare>>("Floor", "Texts");
    registerMap<Standard<std::map<std::wstring, int*>>>("StdMap", "Texts");
    registerMap<Standard<absl::btree_map<std::wstring, int*>>>("AbslBtree", "Texts");
    registerMap<Qt<QString>>("QMap", "Texts");
    return true;
}();
} // namespace
