// UTF-8 both ways, formatted text, and numbers to text and back.
//
// Decoding gives a new text each time, as CStringConverter does: the C library writes into a block that is taken anew,
// and QString goes on to 32 bits, the form in which the library holds text. The floor of a formatted line is its one
// allocation and the C library's own formatting.
#include <Orlix/foundation/CString.h>
#include <Orlix/foundation/CStringConverter.h>

#include "support/CFloorHeap.h"

#include <benchmark/benchmark.h>

#include <fmt/format.h>
#include <fmt/xchar.h>

#include <QByteArray>
#include <QList>
#include <QString>

#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <string>

using Orlix::CString;
using Orlix::CStringConverter;

namespace {

constexpr std::size_t TEXT_BYTES = 4096;

// A sentence of the kind that surfaces show, half of it not ASCII: the shortest stretches that a decoder meets.
const char* const MIXED_PART = "Gerät 触摸 screen größe 1280, Öffnen 打开 the menu: přidat žádost, ";
const char* const ASCII_PART = "the quick brown fox jumps over the lazy dog; touch 17 at (320, 240), ";

std::string repeat(const std::string& strPart) {
    std::string strAll;
    while (strAll.size() + strPart.size() <= TEXT_BYTES)
        strAll += strPart;
    return strAll;
}

struct tagTexts {
    std::string strBytes;
    CString strWide;
    std::u32string strCodes;

    explicit tagTexts(const char* pPart) : strBytes(repeat(pPart)) {
        CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(strBytes.c_str()), strWide);
        strCodes = QString::fromStdString(strBytes).toStdU32String();
    }
};

const tagTexts& getTexts(bool bMixed) {
    static const tagTexts s_ascii(ASCII_PART);
    static const tagTexts s_mixed(MIXED_PART);
    return bMixed ? s_mixed : s_ascii;
}

void setUTF8Locale(benchmark::State& state) {
    if (!std::setlocale(LC_ALL, "zh_CN.utf8"))
        state.SkipWithError("no locale zh_CN.utf8");
}

void CStringConverter_fromUTF8(benchmark::State& state, bool bMixed) {
    const auto* const pBytes = reinterpret_cast<const unsigned char*>(getTexts(bMixed).strBytes.c_str());
    CString strText;
    for (auto _ : state) {
        CStringConverter::convertFromUTF8(pBytes, strText);
        benchmark::DoNotOptimize(strText);
    }
}

void Glibc_fromUTF8(benchmark::State& state, bool bMixed) {
    setUTF8Locale(state);
    const std::string& strBytes = getTexts(bMixed).strBytes;
    for (auto _ : state) {
        auto* pText = static_cast<wchar_t*>(std::malloc((strBytes.size() + 1) * sizeof(wchar_t)));
        std::mbstowcs(pText, strBytes.c_str(), strBytes.size() + 1);
        benchmark::DoNotOptimize(pText);
        std::free(pText);
    }
}

void QString_fromUTF8(benchmark::State& state, bool bMixed) {
    const std::string& strBytes = getTexts(bMixed).strBytes;
    for (auto _ : state)
        benchmark::DoNotOptimize(
            QString::fromUtf8(strBytes.data(), static_cast<qsizetype>(strBytes.size())).toStdU32String());
}

void CStringConverter_toUTF8(benchmark::State& state, bool bMixed) {
    const CString& strWide = getTexts(bMixed).strWide;
    static unsigned char s_aryBytes[TEXT_BYTES * 2];
    for (auto _ : state) {
        unsigned int uiWritten = 0;
        CStringConverter::convertToUTF8(strWide, s_aryBytes, sizeof(s_aryBytes), &uiWritten);
        benchmark::DoNotOptimize(uiWritten);
        benchmark::ClobberMemory();
    }
}

void Glibc_toUTF8(benchmark::State& state, bool bMixed) {
    setUTF8Locale(state);
    const CString& strWide = getTexts(bMixed).strWide;
    static char s_aryBytes[TEXT_BYTES * 2];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::wcstombs(s_aryBytes, strWide.getBuffer(), sizeof(s_aryBytes)));
        benchmark::ClobberMemory();
    }
}

void QString_toUTF8(benchmark::State& state, bool bMixed) {
    const std::u32string& strCodes = getTexts(bMixed).strCodes;
    for (auto _ : state)
        benchmark::DoNotOptimize(QString::fromUcs4(strCodes.data(), static_cast<qsizetype>(strCodes.size())).toUtf8());
}

BENCHMARK_CAPTURE(CStringConverter_fromUTF8, ascii, false);
BENCHMARK_CAPTURE(Glibc_fromUTF8, ascii, false);
BENCHMARK_CAPTURE(QString_fromUTF8, ascii, false);
BENCHMARK_CAPTURE(CStringConverter_fromUTF8, mixed, true);
BENCHMARK_CAPTURE(Glibc_fromUTF8, mixed, true);
BENCHMARK_CAPTURE(QString_fromUTF8, mixed, true);
BENCHMARK_CAPTURE(CStringConverter_toUTF8, ascii, false);
BENCHMARK_CAPTURE(Glibc_toUTF8, ascii, false);
BENCHMARK_CAPTURE(QString_toUTF8, ascii, false);
BENCHMARK_CAPTURE(CStringConverter_toUTF8, mixed, true);
BENCHMARK_CAPTURE(Glibc_toUTF8, mixed, true);
BENCHMARK_CAPTURE(QString_toUTF8, mixed, true);

void CStringConverter_format(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(CStringConverter::format(L"[%u] %s: surface %d moved to (%d, %d)\n", 123456u,
                                                          L"CSurfaceManager", 17, 320, -240));
}
BENCHMARK(CStringConverter_format);

void Floor_format(benchmark::State& state) {
    for (auto _ : state) {
        wchar_t aryText[1024];
        const int iCount = std::swprintf(aryText, 1024, L"[%u] %ls: surface %d moved to (%d, %d)\n", 123456u,
                                         L"CSurfaceManager", 17, 320, -240);
        const std::size_t uiBytes = (static_cast<std::size_t>(iCount) + 1) * sizeof(wchar_t);
        void* pText = CFloorHeap::allocate(uiBytes);
        std::memcpy(pText, aryText, uiBytes);
        benchmark::DoNotOptimize(pText);
        CFloorHeap::release(pText);
    }
}
BENCHMARK(Floor_format);

void Swprintf_format(benchmark::State& state) {
    wchar_t aryText[1024];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::swprintf(aryText, 1024, L"[%u] %ls: surface %d moved to (%d, %d)\n", 123456u,
                                               L"CSurfaceManager", 17, 320, -240));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(Swprintf_format);

void Fmt_format(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(
            fmt::format(L"[{}] {}: surface {} moved to ({}, {})\n", 123456u, L"CSurfaceManager", 17, 320, -240));
}
BENCHMARK(Fmt_format);

// Numbers of one to ten digits in turn, some negative, as they come.
const int NUMBERS[] = {7, -42, 320, 1280, -65536, 123456, 9999999, -12345678, 987654321, -2147483647};
constexpr std::size_t NUMBER_COUNT = sizeof(NUMBERS) / sizeof(NUMBERS[0]);

template <class TConvert> void convertNumbers(benchmark::State& state, TConvert convert) {
    for (auto _ : state) {
        for (int iNumber : NUMBERS) {
            benchmark::DoNotOptimize(iNumber);
            convert(iNumber);
            benchmark::ClobberMemory();
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(NUMBER_COUNT));
}

void CStringConverter_intToText(benchmark::State& state) {
    wchar_t aryText[32] = {};
    benchmark::DoNotOptimize(&aryText[0]);
    convertNumbers(state, [&](int iNumber) { CStringConverter::toString(iNumber, aryText); });
}
BENCHMARK(CStringConverter_intToText);

void FmtWide_intToText(benchmark::State& state) {
    wchar_t aryText[32] = {};
    benchmark::DoNotOptimize(&aryText[0]);
    convertNumbers(state, [&](int iNumber) { fmt::format_to(aryText, L"{}", iNumber); });
}
BENCHMARK(FmtWide_intToText);

void FmtInt_intToText(benchmark::State& state) {
    convertNumbers(state, [](int iNumber) {
        const fmt::format_int text(iNumber); // narrow, nothing but digits
        benchmark::DoNotOptimize(text.data());
    });
}
BENCHMARK(FmtInt_intToText);

void ToWString_intToText(benchmark::State& state) {
    convertNumbers(state, [](int iNumber) { benchmark::DoNotOptimize(std::to_wstring(iNumber)); });
}
BENCHMARK(ToWString_intToText);

template <class TConvert> void readNumbers(benchmark::State& state, TConvert convert) {
    std::wstring aryText[NUMBER_COUNT];
    for (std::size_t i = 0; i < NUMBER_COUNT; ++i)
        aryText[i] = std::to_wstring(NUMBERS[i]);
    for (auto _ : state) {
        for (const std::wstring& strText : aryText)
            benchmark::DoNotOptimize(convert(strText.c_str()));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(NUMBER_COUNT));
}

void CStringConverter_textToInt(benchmark::State& state) {
    readNumbers(state, [](const wchar_t* pText) { return CStringConverter::toInt(pText); });
}
BENCHMARK(CStringConverter_textToInt);

void Wcstol_textToInt(benchmark::State& state) {
    readNumbers(state, [](const wchar_t* pText) { return std::wcstol(pText, nullptr, 10); });
}
BENCHMARK(Wcstol_textToInt);
} // namespace
