// Making, growing, searching and replacing text.
//
// The floor does what the string is bound to: a block of its own per text and a new one per append, from a free list
// under a recursive mutex. std::wstring and QString keep spare room, so they append without a block of their own each
// time: that is what exact buffers cost, and it stays visible here.
#include <Orlix/foundation/CString.h>

#include "support/CFloorHeap.h"

#include <benchmark/benchmark.h>

#include <QString>

#include <cwchar>
#include <string>

using Orlix::CString;

namespace {

const wchar_t* const SHORT_TEXT = L"button_ok_normal.png";
const wchar_t* const EIGHT_CHARS = L"abcdefgh";
constexpr int APPENDS = 100;

std::size_t measure(const wchar_t* pText) {
    benchmark::DoNotOptimize(pText); // or the compiler counts a literal
    return std::wcslen(pText);
}

wchar_t* floorCopy(const wchar_t* pText, std::size_t uiLength) {
    wchar_t* const pCopy = static_cast<wchar_t*>(CFloorHeap::allocate((uiLength + 1) * sizeof(wchar_t)));
    std::wmemcpy(pCopy, pText, uiLength);
    pCopy[uiLength] = L'\0';
    return pCopy;
}

void CString_make(benchmark::State& state) {
    for (auto _ : state) {
        CString strText(SHORT_TEXT);
        CString strCopy(strText);
        benchmark::DoNotOptimize(strCopy);
    }
}
BENCHMARK(CString_make);

void Floor_make(benchmark::State& state) {
    for (auto _ : state) {
        const std::size_t uiLength = measure(SHORT_TEXT);
        wchar_t* pText = floorCopy(SHORT_TEXT, uiLength);
        benchmark::DoNotOptimize(pText);
        wchar_t* pCopy = floorCopy(pText, uiLength);
        benchmark::DoNotOptimize(pCopy);
        CFloorHeap::release(pCopy);
        CFloorHeap::release(pText);
    }
}
BENCHMARK(Floor_make);

void StdWString_make(benchmark::State& state) {
    for (auto _ : state) {
        std::wstring strText(SHORT_TEXT);
        std::wstring strCopy(strText);
        benchmark::DoNotOptimize(strCopy);
    }
}
BENCHMARK(StdWString_make);

void QString_make(benchmark::State& state) {
    for (auto _ : state) {
        QString strText(QStringLiteral("button_ok_normal.png").constData(), 20);
        QString strCopy(strText); // shares
        benchmark::DoNotOptimize(strCopy);
    }
}
BENCHMARK(QString_make);

void CString_append100(benchmark::State& state) {
    for (auto _ : state) {
        CString strText;
        for (int i = 0; i < APPENDS; ++i)
            strText.append(EIGHT_CHARS);
        benchmark::DoNotOptimize(strText);
    }
}
BENCHMARK(CString_append100);

void Floor_append100(benchmark::State& state) {
    for (auto _ : state) {
        wchar_t* pText = nullptr;
        std::size_t uiLength = 0;
        for (int i = 0; i < APPENDS; ++i) {
            const std::size_t uiAdded = measure(EIGHT_CHARS);
            wchar_t* const pLonger =
                static_cast<wchar_t*>(CFloorHeap::allocate((uiLength + uiAdded + 1) * sizeof(wchar_t)));
            if (pText) {
                std::wmemcpy(pLonger, pText, uiLength);
                CFloorHeap::release(pText);
            }
            std::wmemcpy(pLonger + uiLength, EIGHT_CHARS, uiAdded);
            uiLength += uiAdded;
            pLonger[uiLength] = L'\0';
            pText = pLonger;
            benchmark::DoNotOptimize(pText);
        }
        CFloorHeap::release(pText);
    }
}
BENCHMARK(Floor_append100);

void StdWString_append100(benchmark::State& state) {
    for (auto _ : state) {
        std::wstring strText;
        for (int i = 0; i < APPENDS; ++i)
            strText.append(EIGHT_CHARS);
        benchmark::DoNotOptimize(strText);
    }
}
BENCHMARK(StdWString_append100);

void QString_append100(benchmark::State& state) {
    const QString strEight(QStringLiteral("abcdefgh"));
    for (auto _ : state) {
        QString strText;
        for (int i = 0; i < APPENDS; ++i)
            strText.append(strEight);
        benchmark::DoNotOptimize(strText);
    }
}
BENCHMARK(QString_append100);

std::wstring repeat(const std::wstring& strPart, std::size_t uiLength) {
    std::wstring strAll;
    while (strAll.size() < uiLength)
        strAll += strPart;
    strAll.resize(uiLength);
    return strAll;
}

const std::wstring PROSE = L"the quick brown fox jumps over the lazy dog while the surface waits for a touch, then ";

struct tagSearch {
    const char* pName;
    std::wstring strText;
    std::wstring strPattern;
};

const tagSearch SEARCHES[] = {
    {"rareFirst", repeat(PROSE, 1018) + L"Zebra!", L"Zebra!"},
    {"usual", repeat(PROSE, 1017) + L"thermos", L"thermos"},
    {"absent", repeat(PROSE, 1024), L"thermal"},
    {"short", L"images/button_ok_normal.png", L".png"},
    {"aaab", std::wstring(1024, L'a'), std::wstring(32, L'a') + L"b"},
    {"baaa", std::wstring(1024, L'a'), L"b" + std::wstring(32, L'a')},
    {"abaa", std::wstring(1024, L'a'), std::wstring(16, L'a') + L"b" + std::wstring(16, L'a')},
};

void CString_find(benchmark::State& state, const tagSearch& search) {
    const CString strText(search.strText.c_str());
    const CString strPattern(search.strPattern.c_str());
    for (auto _ : state)
        benchmark::DoNotOptimize(strText.indexOf(strPattern, 0));
}

void StdWString_find(benchmark::State& state, const tagSearch& search) {
    for (auto _ : state)
        benchmark::DoNotOptimize(search.strText.find(search.strPattern));
}

void QString_find(benchmark::State& state, const tagSearch& search) {
    const QString strText = QString::fromStdWString(search.strText);
    const QString strPattern = QString::fromStdWString(search.strPattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(strText.indexOf(strPattern));
}

const std::wstring REPLACE_SOURCE = repeat(PROSE, 4096);

// Each round begins with a copy, which all pay alike.
void CString_replaceAll(benchmark::State& state) {
    const CString strSource(REPLACE_SOURCE.c_str());
    for (auto _ : state) {
        CString strText(strSource);
        strText.replaceAll(L"the", L"every");
        benchmark::DoNotOptimize(strText);
    }
}
BENCHMARK(CString_replaceAll);

void StdWString_replaceAll(benchmark::State& state) {
    for (auto _ : state) {
        std::wstring strText(REPLACE_SOURCE);
        for (std::size_t uiPos = 0; (uiPos = strText.find(L"the", uiPos)) != std::wstring::npos; uiPos += 5)
            strText.replace(uiPos, 3, L"every");
        benchmark::DoNotOptimize(strText);
    }
}
BENCHMARK(StdWString_replaceAll);

void QString_replaceAll(benchmark::State& state) {
    const QString strSource = QString::fromStdWString(REPLACE_SOURCE);
    const QString strFrom(QStringLiteral("the"));
    const QString strTo(QStringLiteral("every"));
    for (auto _ : state) {
        QString strText(strSource);
        strText.replace(strFrom, strTo);
        benchmark::DoNotOptimize(strText);
    }
}
BENCHMARK(QString_replaceAll);

const bool g_bRegistered = [] {
    for (const tagSearch& search : SEARCHES) {
        const std::string strWork = std::string("_find_") + search.pName;
        benchmark::RegisterBenchmark(("CString" + strWork).c_str(), CString_find, search);
        benchmark::RegisterBenchmark(("StdWString" + strWork).c_str(), StdWString_find, search);
        benchmark::RegisterBenchmark(("QString" + strWork).c_str(), QString_find, search);
    }
    return true;
}();
} // namespace
