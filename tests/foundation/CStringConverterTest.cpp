#include <Orlix/foundation/CStringConverter.h>

#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CDataList.h>
#include <Orlix/foundation/CString.h>

#include "support/ChildProcess.h"
#include "support/HeapUse.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <climits>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace Orlix;

namespace {

std::wstring textOf(const CString& str) {
    return str.isEmpty() ? std::wstring(L"<null>") : std::wstring(str.getBuffer(), str.length());
}

std::vector<std::wstring> textsOf(const CDataArray<CString>& ary) {
    std::vector<std::wstring> aryResult;
    for (unsigned int i = 0; i < ary.getSize(); ++i)
        aryResult.push_back(textOf(ary[i]));
    return aryResult;
}

std::vector<std::wstring> textsOf(CDataList<CString>& list) {
    std::vector<std::wstring> aryResult;
    list.toHead();
    while (const CString* pText = list.next())
        aryResult.push_back(textOf(*pText));
    return aryResult;
}

const unsigned char* narrow(const std::string& str) { return reinterpret_cast<const unsigned char*>(str.c_str()); }

std::wstring widen(const std::string& str) { return std::wstring(str.begin(), str.end()); }

template <class T> std::wstring toText(T value) {
    wchar_t aryBuffer[32] = {};
    CStringConverter::toString(value, aryBuffer);
    return aryBuffer;
}

std::wstring toText(float fValue, unsigned int uiDecimals) {
    wchar_t aryBuffer[33];
    std::wmemset(aryBuffer, L'#', 33);
    CStringConverter::toString(fValue, aryBuffer, uiDecimals);
    EXPECT_EQ(aryBuffer[32], L'#') << "wrote past 32 characters";
    return aryBuffer;
}

std::wstring decodeUtf8(const std::string& strBytes) {
    CString strResult;
    CStringConverter::convertFromUTF8(narrow(strBytes), strResult);
    EXPECT_EQ(strResult.getBuffer()[strResult.length()], L'\0');
    return textOf(strResult);
}

std::string encodeUtf8(const std::wstring& strText, unsigned int uiSize) {
    std::vector<unsigned char> aryTarget(uiSize + 1, 0xEE);
    unsigned int uiWritten = 77;
    CStringConverter::convertToUTF8(strText.c_str(), aryTarget.data(), uiSize, &uiWritten);
    EXPECT_EQ(aryTarget[uiWritten], 0) << "not terminated";
    EXPECT_EQ(aryTarget[uiSize], 0xEE) << "wrote past the target";
    return std::string(aryTarget.begin(), aryTarget.begin() + uiWritten);
}

// The table of an XML writer, the usual caller.
const wchar_t ESCAPED[] = {L'&', L'<', L'>', L'"'};
const wchar_t* s_aryCodes[] = {L"&amp;", L"&lt;", L"&gt;", L"&quot;"};
const unsigned int CODE_LENGTHS[] = {5, 4, 4, 6};

std::wstring encode(const CString& strText) {
    CString strResult;
    CStringConverter::encodeChars(strText, 4, ESCAPED, s_aryCodes, CODE_LENGTHS, strResult);
    return textOf(strResult);
}

std::wstring decode(const CString& strText) {
    CString strResult(L"before");
    CStringConverter::decodeChars(strText, 4, ESCAPED, s_aryCodes, CODE_LENGTHS, strResult);
    return textOf(strResult);
}

std::vector<std::wstring> separate(const wchar_t* pText, bool bStart, bool bEnd) {
    CDataArray<CString> aryTarget;
    CDataList<CString> listTarget;
    CStringConverter::separateString(CString(pText), L',', aryTarget, bStart, bEnd);
    CStringConverter::separateString(CString(pText), L',', listTarget, bStart, bEnd);
    EXPECT_EQ(textsOf(aryTarget), textsOf(listTarget));
    return textsOf(aryTarget);
}

std::vector<unsigned int> separateNumbers(const wchar_t* pText, bool bStart, bool bEnd) {
    CDataArray<unsigned int> aryTarget;
    CStringConverter::separateString(CString(pText), L',', aryTarget, bStart, bEnd);
    std::vector<unsigned int> aryResult;
    for (unsigned int i = 0; i < aryTarget.getSize(); ++i)
        aryResult.push_back(aryTarget[i]);
    return aryResult;
}

std::vector<std::wstring> splitBy(const CString& strText, const wchar_t* pSeparators, bool bStart, bool bEnd) {
    CDataArray<wchar_t> arySeparators;
    for (; *pSeparators; ++pSeparators)
        arySeparators.add(*pSeparators);
    CDataArray<CString> aryTarget;
    aryTarget.add(CString(L"first"));
    CStringConverter::split(strText, arySeparators, aryTarget, bStart, bEnd);
    return textsOf(aryTarget);
}

int measure(const wchar_t* pFormat, ...) {
    va_list listArgs;
    va_start(listArgs, pFormat);
    const int iFirst = vscwprintf(pFormat, listArgs);
    EXPECT_EQ(vscwprintf(pFormat, listArgs), iFirst) << "the arguments were used up";
    va_end(listArgs);
    return iFirst;
}

using Texts = std::vector<std::wstring>;

// Straightforward references for the comparisons with random input.

std::wstring referenceDecode(const std::string& str) {
    std::wstring strResult;
    for (std::size_t i = 0; i < str.size();) {
        const unsigned int a = static_cast<unsigned char>(str[i]);
        const auto tail = [&](std::size_t k) { return static_cast<unsigned int>(str[i + k]) & 63u; };
        const std::size_t uiForm = a >= 224 ? 3 : a >= 192 ? 2 : 1;
        if (i + uiForm > str.size())
            break;
        if (uiForm == 3)
            strResult += static_cast<wchar_t>((a & 15) * 4096 + tail(1) * 64 + tail(2));
        else if (uiForm == 2)
            strResult += static_cast<wchar_t>((a & 31) * 64 + tail(1));
        else if (a < 128)
            strResult += static_cast<wchar_t>(a);
        i += uiForm;
    }
    return strResult;
}

std::string referenceEncode(const std::wstring& str, std::size_t uiSize) {
    std::string strResult;
    for (const wchar_t ch : str) {
        const unsigned int c = static_cast<unsigned int>(ch);
        std::string strOne;
        if (c <= 127)
            strOne = {static_cast<char>(c)};
        else if (c < 2048)
            strOne = {static_cast<char>(192 + c / 64), static_cast<char>(128 + c % 64)};
        else
            strOne = {static_cast<char>(224 + c / 4096 % 16), static_cast<char>(128 + c / 64 % 64),
                      static_cast<char>(128 + c % 64)};
        if (strResult.size() + strOne.size() >= uiSize)
            break;
        strResult += strOne;
    }
    return strResult;
}

Texts referenceSeparate(const std::wstring& str, bool bStart, bool bEnd) {
    Texts aryResult;
    if (str.empty())
        return aryResult;
    std::size_t i = 0;
    if (str[0] == L',') {
        if (bStart)
            aryResult.push_back(L"");
        i = 1;
    }
    std::wstring strToken;
    for (; i < str.size(); ++i) {
        if (str[i] == L',') {
            aryResult.push_back(strToken);
            strToken.clear();
        } else {
            strToken += str[i];
        }
    }
    if (!strToken.empty())
        aryResult.push_back(strToken);
    if (str.back() == L',' && bEnd)
        aryResult.push_back(L"");
    return aryResult;
}
} // namespace

TEST(CStringConverter, ReadsIntegersUpToTheFirstOtherCharacter) {
    const struct {
        const char* pText;
        long lValue;
    } aryRow[] = {{"", 0},
                  {"-", 0},
                  {"0", 0},
                  {"12ab", 12},
                  {"-12", -12},
                  {"--1", 0},
                  {"+1", 0},
                  {" 1", 0},
                  {"1 2", 1},
                  {"007", 7},
                  {"1.9", 1},
                  {"0x10", 0},
                  {"a1", 0},
                  {"2147483647", 2147483647},
                  {"-2147483648", INT_MIN}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(CStringConverter::toInt(widen(row.pText).c_str()), row.lValue) << row.pText;
        EXPECT_EQ(CStringConverter::toInt(narrow(row.pText)), row.lValue) << row.pText;
        EXPECT_EQ(CStringConverter::toLLong(widen(row.pText).c_str()), row.lValue) << row.pText;
        EXPECT_EQ(CStringConverter::toLLong(narrow(row.pText)), row.lValue) << row.pText;
    }
}

TEST(CStringConverter, IntegersWrapAtTheirWidth) {
    EXPECT_EQ(CStringConverter::toInt(L"2147483648"), INT_MIN);
    EXPECT_EQ(CStringConverter::toInt(L"4294967297"), 1);
    EXPECT_EQ(CStringConverter::toInt(L"-4294967297"), -1);
    EXPECT_EQ(CStringConverter::toUInt(L"4294967296"), 0u);
    EXPECT_EQ(CStringConverter::toUInt(L"0x123456789"), 0x23456789u);
    EXPECT_EQ(CStringConverter::toLLong(L"4294967297"), 4294967297L);
    EXPECT_EQ(CStringConverter::toLLong(L"9223372036854775808"), LONG_MIN);
    EXPECT_EQ(CStringConverter::toLLong(L"18446744073709551617"), 1);
}

TEST(CStringConverter, ReadsUnsignedNumbersDecimalAndHexadecimal) {
    const struct {
        const char* pText;
        unsigned int uiValue;
    } aryRow[] = {{"", 0},
                  {"0", 0},
                  {"-1", 0},
                  {"+1", 0},
                  {"12ab", 12},
                  {"010", 10},
                  {"4294967295", UINT_MAX},
                  {"0x", 0},
                  {"0X", 0},
                  {"0xfF", 255},
                  {"0X1a", 26},
                  {"0x1G2", 18},
                  {"0x 1,2-3", 0x123},
                  {"0xx1", 1},
                  {"00x1", 0},
                  {"x1", 0},
                  {"-0x1", 0},
                  {"0xgG@`:/", 0},
                  {"0x0123456789abcdefABCDEF", 0xEFABCDEF}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(CStringConverter::toUInt(widen(row.pText).c_str()), row.uiValue) << row.pText;
        EXPECT_EQ(CStringConverter::toUInt(narrow(row.pText)), row.uiValue) << row.pText;
    }
}

TEST(CStringConverter, ReadsFloatsWithoutExponent) {
    const struct {
        const char* pText;
        float fValue;
    } aryRow[] = {{"", 0.0f},   {".5", 0.5f},      {"-.5", -0.5f}, {"1.", 1.0f},    {"1.x", 1.0f},
                  {".", 0.0f},  {"12.25", 12.25f}, {"-3", -3.0f},  {"1e5", 1.0f},   {"1.5e5", 1.5f},
                  {"+1", 0.0f}, {" 1", 0.0f},      {"1,5", 1.0f},  {"1.2.3", 1.2f}, {"16777217", 16777216.0f},
                  {"abc", 0.0f}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(CStringConverter::toFloat(widen(row.pText).c_str()), row.fValue) << row.pText;
        EXPECT_EQ(CStringConverter::toFloat(narrow(row.pText)), row.fValue) << row.pText;
    }
    EXPECT_TRUE(std::signbit(CStringConverter::toFloat(L"-")));
    EXPECT_EQ(CStringConverter::toFloat(L"-"), 0.0f);
    EXPECT_TRUE(std::isinf(CStringConverter::toFloat(std::wstring(400, L'9').c_str())));
    EXPECT_EQ(CStringConverter::toFloat((L"0.5" + std::wstring(100, L'0') + L"9").c_str()), 0.5f);
}

TEST(CStringConverter, DividesFractionDigitsInSinglePrecision) {
    const double dSingle = 9.0 + static_cast<double>(7.0f / 10.0f) + static_cast<double>(3.0f / 100.0f);
    EXPECT_EQ(CStringConverter::toFloat(L"9.73"), static_cast<float>(dSingle));
    std::mt19937 random(5);
    unsigned int uiDiffers = 0;
    for (int i = 0; i < 20000; ++i) {
        const unsigned int uiWhole = random() % 1000;
        std::string strText = std::to_string(uiWhole) + ".";
        double dValue = uiWhole, dExact = uiWhole, dScale = 1;
        float fDivisor = 1.0f;
        for (unsigned int k = random() % 8 + 1; k != 0; --k) {
            const unsigned int uiDigit = random() % 10;
            strText += static_cast<char>('0' + uiDigit);
            fDivisor *= 10.0f;
            dValue += static_cast<double>(static_cast<float>(uiDigit) / fDivisor);
            dExact += uiDigit / (dScale *= 10);
        }
        EXPECT_EQ(CStringConverter::toFloat(widen(strText).c_str()), static_cast<float>(dValue)) << strText;
        uiDiffers += static_cast<float>(dValue) != static_cast<float>(dExact);
    }
    EXPECT_GT(uiDiffers, 0u) << "the comparison cannot tell the two precisions apart";
}

TEST(CStringConverter, OnlyTheFourLettersAreTrue) {
    const struct {
        const char* pText;
        bool bValue;
    } aryRow[] = {{"true", true}, {"True", false},  {"TRUE", false}, {"true ", false}, {" true", false},
                  {"tru", false}, {"truee", false}, {"", false},     {"1", false},     {"false", false}};
    for (const auto& row : aryRow) {
        EXPECT_EQ(CStringConverter::toBool(widen(row.pText).c_str()), row.bValue) << row.pText;
        EXPECT_EQ(CStringConverter::toBool(narrow(row.pText)), row.bValue) << row.pText;
    }
}

TEST(CStringConverter, NullReadsAsNothing) {
    const wchar_t* const pWide = nullptr;
    const unsigned char* const pNarrow = nullptr;
    EXPECT_EQ(CStringConverter::toInt(pWide), 0);
    EXPECT_EQ(CStringConverter::toInt(pNarrow), 0);
    EXPECT_EQ(CStringConverter::toUInt(pWide), 0u);
    EXPECT_EQ(CStringConverter::toUInt(pNarrow), 0u);
    EXPECT_EQ(CStringConverter::toLLong(pWide), 0);
    EXPECT_EQ(CStringConverter::toLLong(pNarrow), 0);
    EXPECT_EQ(CStringConverter::toFloat(pWide), 0.0f);
    EXPECT_EQ(CStringConverter::toFloat(pNarrow), 0.0f);
    EXPECT_FALSE(CStringConverter::toBool(pWide));
    EXPECT_FALSE(CStringConverter::toBool(pNarrow));
}

TEST(CStringConverter, WritesIntegersAtEveryLength) {
    EXPECT_EQ(toText(0), L"0");
    EXPECT_EQ(toText(0u), L"0");
    EXPECT_EQ(toText(0L), L"0");
    EXPECT_EQ(toText(INT_MIN), L"-2147483648");
    EXPECT_EQ(toText(INT_MAX), L"2147483647");
    EXPECT_EQ(toText(UINT_MAX), L"4294967295");
    EXPECT_EQ(toText(LONG_MIN), L"-9223372036854775808");
    EXPECT_EQ(toText(LONG_MAX), L"9223372036854775807");
    for (unsigned long uiPower = 1, i = 0; i < 19; ++i, uiPower *= 10) {
        for (const unsigned long uiValue : {uiPower - 1, uiPower, uiPower + 1}) {
            EXPECT_EQ(toText(static_cast<long>(uiValue)), std::to_wstring(uiValue));
            EXPECT_EQ(toText(-static_cast<long>(uiValue)), std::to_wstring(-static_cast<long>(uiValue)));
            EXPECT_EQ(toText(static_cast<int>(uiValue)), std::to_wstring(static_cast<int>(uiValue)));
            EXPECT_EQ(toText(static_cast<unsigned int>(uiValue)), std::to_wstring(static_cast<unsigned int>(uiValue)));
        }
    }
}

TEST(CStringConverter, RandomIntegersGoOutAndComeBack) {
    std::mt19937_64 random(7);
    for (int i = 0; i < 50000; ++i) {
        const long lValue = static_cast<long>(random() >> random() % 64);
        const long lSigned = random() % 2 ? lValue : static_cast<long>(0ul - static_cast<unsigned long>(lValue));
        ASSERT_EQ(toText(lSigned), std::to_wstring(lSigned));
        ASSERT_EQ(CStringConverter::toLLong(toText(lSigned).c_str()), lSigned);
        const int iValue = static_cast<int>(lSigned);
        ASSERT_EQ(toText(iValue), std::to_wstring(iValue));
        ASSERT_EQ(CStringConverter::toInt(narrow(std::to_string(iValue))), iValue);
        const unsigned int uiValue = static_cast<unsigned int>(lSigned);
        ASSERT_EQ(toText(uiValue), std::to_wstring(uiValue));
        ASSERT_EQ(CStringConverter::toUInt(toText(uiValue).c_str()), uiValue);
    }
}

TEST(CStringConverter, IntegersAndBoolsHaveNoTerminator) {
    wchar_t aryBuffer[8];
    std::wmemset(aryBuffer, L'#', 8);
    CStringConverter::toString(-12, aryBuffer);
    EXPECT_EQ(std::wstring(aryBuffer, 8), L"-12#####");
    CStringConverter::toString(345u, aryBuffer);
    EXPECT_EQ(std::wstring(aryBuffer, 8), L"345#####");
    CStringConverter::toString(6789L, aryBuffer);
    EXPECT_EQ(std::wstring(aryBuffer, 8), L"6789####");
    CStringConverter::toString(true, aryBuffer);
    EXPECT_EQ(std::wstring(aryBuffer, 8), L"true####");
    CStringConverter::toString(false, aryBuffer);
    EXPECT_EQ(std::wstring(aryBuffer, 8), L"false###");
}

TEST(CStringConverter, WritesFloatsAsFixedPoint) {
    EXPECT_EQ(toText(1.5f, 4), L"1.5000");
    EXPECT_EQ(toText(-0.0f, 1), L"-0.0");
    EXPECT_EQ(toText(2.5f, 0), L"2");
    EXPECT_EQ(toText(0.1f, 10), L"0.1000000015");
    EXPECT_EQ(toText(INFINITY, 2), L"inf");
}

TEST(CStringConverter, CutsALongFloatAfter31Characters) {
    EXPECT_EQ(toText(3e38f, 4), L"3000000005497755757778039942811");
    EXPECT_EQ(toText(0.5f, 40), L"0."
                                L"50000000000000000000000000000");
    EXPECT_EQ(toText(1.0f / 3, UINT_MAX).size(), 31u);
}

TEST(CStringConverter, WritesUtf16IntoAZeroedTarget) {
    unsigned char aryTarget[10];
    const struct {
        const wchar_t* pText;
        unsigned int uiSize;
        unsigned short aryUnit[4];
        unsigned char uiLast;
    } aryRow[] = {{L"AB", 8, {65, 66, 0, 0}, 0},
                  {L"ABCD", 8, {65, 66, 67, 68}, 0},
                  {L"ABCDEF", 8, {65, 66, 67, 68}, 0},
                  {L"ABCD", 7, {65, 66, 67, 0xEE00}, 0},
                  {L"\U0001F600\u20AC", 8, {0xF600, 0x20AC, 0, 0}, 0},
                  {L"", 8, {0, 0, 0, 0}, 0},
                  {nullptr, 8, {0, 0, 0, 0}, 0},
                  {L"A", 1, {0xEE00, 0xEEEE, 0xEEEE, 0xEEEE}, 0},
                  {L"A", 0, {0xEEEE, 0xEEEE, 0xEEEE, 0xEEEE}, 0}};
    for (const auto& row : aryRow) {
        for (const bool bString : {false, true}) {
            std::memset(aryTarget, 0xEE, sizeof(aryTarget));
            if (bString)
                CStringConverter::convertToUTF16(CString(row.pText), aryTarget, row.uiSize);
            else
                CStringConverter::convertToUTF16(row.pText, aryTarget, row.uiSize);
            EXPECT_EQ(std::memcmp(aryTarget, row.aryUnit, 8), 0) << row.uiSize;
            EXPECT_EQ(aryTarget[8], 0xEE);
        }
    }
    CStringConverter::convertToUTF16(L"A", nullptr, 8);
}

TEST(CStringConverter, FillsTheUTF16TargetExactlyAtEveryLength) {
    std::mt19937 random(16);
    std::wstring strText;
    for (; strText.size() < 70; strText += static_cast<wchar_t>(random() % 0x10FFFF + 1)) {
        for (unsigned int uiSize = 0; uiSize < 150; ++uiSize) {
            std::string strTarget(151, '#'), strModel(uiSize, '\0');
            for (unsigned int i = 0; i < uiSize / 2 && i < strText.size(); ++i) {
                strModel[i * 2] = static_cast<char>(strText[i] & 0xFF);
                strModel[i * 2 + 1] = static_cast<char>(strText[i] >> 8 & 0xFF);
            }
            strModel.resize(strTarget.size(), '#');
            CStringConverter::convertToUTF16(strText.c_str(), reinterpret_cast<unsigned char*>(strTarget.data()),
                                             uiSize);
            ASSERT_EQ(strTarget, strModel) << strText.size() << " characters, " << uiSize << " bytes";
        }
    }
}

TEST(CStringConverter, ReadsUtf16UnitByUnit) {
    const unsigned short aryUnit[] = {0xFEFF, 0xD83D, 0xDE00, 0, 65};
    const auto* const pSource = reinterpret_cast<const unsigned char*>(aryUnit);
    CString strResult;
    CStringConverter::convertFromUTF16(pSource, 10, strResult);
    EXPECT_EQ(textOf(strResult), std::wstring(L"\xFEFF\xD83D\xDE00\0A", 5));
    CStringConverter::convertFromUTF16(pSource, 3, strResult);
    EXPECT_EQ(textOf(strResult), L"\xFEFF");
    CStringConverter::convertFromUTF16(pSource, 0, strResult);
    CStringConverter::convertFromUTF16(nullptr, 8, strResult);
    EXPECT_EQ(textOf(strResult), L"\xFEFF") << "null or size 0 has to leave the string";
    CStringConverter::convertFromUTF16(pSource, 1, strResult);
    EXPECT_EQ(textOf(strResult), L"");
}

TEST(CStringConverter, WritesUtf8OfUpToThreeBytes) {
    EXPECT_EQ(encodeUtf8(L"", 1), "");
    EXPECT_EQ(encodeUtf8(L"A\x7F", 10), "A\x7F");
    EXPECT_EQ(encodeUtf8(L"\x80\x7FF", 10), "\xC2\x80\xDF\xBF");
    EXPECT_EQ(encodeUtf8(L"\x800\xFFFF", 10), "\xE0\xA0\x80\xEF\xBF\xBF");
    EXPECT_EQ(encodeUtf8(L"\U0001F600", 10), "\xEF\x98\x80") << "upper bits are lost";
    EXPECT_EQ(encodeUtf8({static_cast<wchar_t>(0x80000041)}, 10), "\xE0\x81\x81") << "codes count as unsigned";
}

TEST(CStringConverter, Utf8StopsBeforeACharacterThatDoesNotFit) {
    EXPECT_EQ(encodeUtf8(L"\xE9\x61", 3), "\xC3\xA9");
    EXPECT_EQ(encodeUtf8(L"\xE9\x61", 2), "");
    EXPECT_EQ(encodeUtf8(L"a\x4F60\x62", 4), "a") << "nothing behind the one that does not fit either";
    EXPECT_EQ(encodeUtf8(std::wstring(40, L'x'), 33), std::string(32, 'x'));
    EXPECT_EQ(encodeUtf8(std::wstring(40, L'x'), 1), "");
}

TEST(CStringConverter, Utf8WithoutSourceOrTargetReportsZero) {
    unsigned char aryTarget[4] = {9, 9, 9, 9};
    for (int i = 0; i < 3; ++i) {
        unsigned int uiWritten = 5;
        CStringConverter::convertToUTF8(i == 0 ? nullptr : L"a", i == 1 ? nullptr : aryTarget, i == 2 ? 0 : 4,
                                        &uiWritten);
        EXPECT_EQ(uiWritten, 0u);
        EXPECT_EQ(aryTarget[0], 9);
    }
    CStringConverter::convertToUTF8(static_cast<const wchar_t*>(nullptr), aryTarget, 4, nullptr);
    EXPECT_EQ(aryTarget[0], 9);
    CStringConverter::convertToUTF8(CString(L"ab"), aryTarget, 4, nullptr);
    EXPECT_STREQ(reinterpret_cast<char*>(aryTarget), "ab");
}

TEST(CStringConverter, ReadsUtf8WithoutCheckingTails) {
    EXPECT_EQ(decodeUtf8(""), L"");
    EXPECT_EQ(decodeUtf8("a\xC3\xA9\xE4\xBD\xA0z"), L"a\xE9\x4F60z");
    EXPECT_EQ(decodeUtf8("a\x80\xBF"
                         "b"),
              L"ab")
        << "stray bytes are dropped";
    EXPECT_EQ(decodeUtf8("ab\xE4\xBD"), L"ab");
    EXPECT_EQ(decodeUtf8("ab\xE4"), L"ab");
    EXPECT_EQ(decodeUtf8("ab\xC3"), L"ab");
    EXPECT_EQ(decodeUtf8("\xC3"
                         "A"),
              L"\xC1")
        << "a tail is taken whatever it is";
    EXPECT_EQ(decodeUtf8("\xF0\x9F\x98\x80"), L"\x7D8") << "a four-byte form is three bytes and a stray one";
    EXPECT_EQ(decodeUtf8("\xFF\xBF\xBF"), L"\xFFFF");
    CString strResult(L"before");
    CStringConverter::convertFromUTF8(nullptr, strResult);
    EXPECT_TRUE(strResult.isEmpty());
}

TEST(CStringConverter, RandomBytesAndCodesAgreeWithTheReference) {
    std::mt19937 random(11);
    for (int i = 0; i < 20000; ++i) {
        const unsigned int uiOdd = random() % 4; // how often a byte or code is not ASCII, from never to mostly
        std::string strBytes(random() % 100, ' ');
        for (char& ch : strBytes)
            ch = static_cast<char>(random() % 8 < uiOdd * 2 ? random() % 128 + 128 : random() % 127 + 1);
        ASSERT_EQ(decodeUtf8(strBytes), referenceDecode(strBytes)) << i;
        std::wstring strCodes(random() % 100, L' ');
        for (wchar_t& ch : strCodes)
            ch = static_cast<wchar_t>(random() % 8 < uiOdd * 2 ? random() >> random() % 32 | 1 : random() % 127 + 1);
        const unsigned int uiSize = random() % 150 + 1;
        ASSERT_EQ(encodeUtf8(strCodes, uiSize), referenceEncode(strCodes, uiSize)) << i;
        for (wchar_t& ch : strCodes)
            ch &= 0xFFFF;
        strCodes = std::wstring(strCodes.c_str());
        ASSERT_EQ(decodeUtf8(encodeUtf8(strCodes, 400)), strCodes) << i;
        std::vector<unsigned char> aryUnits(strCodes.size() * 2 + 2);
        CStringConverter::convertToUTF16(strCodes.c_str(), aryUnits.data(), static_cast<unsigned int>(aryUnits.size()));
        CString strBack;
        CStringConverter::convertFromUTF16(aryUnits.data(), static_cast<unsigned int>(strCodes.size() * 2 + 1),
                                           strBack);
        ASSERT_EQ(textOf(strBack), strCodes) << i;
    }
}

TEST(CStringConverter, CountsLongTextsBeyondOneSumOfBlocks) {
    std::string strBytes;
    for (int i = 0; i < 5000; ++i)
        strBytes += i % 7 ? "a" : "\xE4\xBD\xA0";
    EXPECT_EQ(decodeUtf8(strBytes), referenceDecode(strBytes));
    EXPECT_EQ(decodeUtf8(std::string(16 * 256 * 3, 'x')), std::wstring(16 * 256 * 3, L'x'));
}

TEST(CStringConverter, MbcsIsUtf8AndSetsTheLocaleForGood) {
    char aryTarget[16];
    std::memset(aryTarget, '#', sizeof(aryTarget));
    CStringConverter::convertToMBCS(L"a\x4F60\U0001F600", aryTarget, 15);
    EXPECT_STREQ(aryTarget, "a\xE4\xBD\xA0\xF0\x9F\x98\x80");
    EXPECT_EQ(std::string(aryTarget + 8, 7), std::string(7, '\0')) << "the target is zeroed";
    EXPECT_EQ(aryTarget[15], '#');
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "zh_CN.utf8");
    std::setlocale(LC_ALL, "C");
    CString strResult;
    CStringConverter::convertFromMBCS("a\xE4\xBD\xA0\xF0\x9F\x98\x80", strResult);
    EXPECT_EQ(textOf(strResult), L"a\x4F60\U0001F600");
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "zh_CN.utf8");
}

TEST(CStringConverter, MbcsLeavesRoomForTheTerminator) {
    char aryTarget[5] = "####";
    CStringConverter::convertToMBCS(CString(L"abcdef"), aryTarget, 4);
    EXPECT_STREQ(aryTarget, "abc");
    CStringConverter::convertToMBCS(L"ab\x4F60", aryTarget, 4);
    EXPECT_STREQ(aryTarget, "ab") << "no half characters";
}

TEST(CStringConverter, MbcsWithoutSourceOrTargetSetsNoLocale) {
    std::setlocale(LC_ALL, "C");
    char aryTarget[4] = "###";
    CStringConverter::convertToMBCS(L"a", nullptr, 4);
    CStringConverter::convertToMBCS(L"a", aryTarget, 0);
    EXPECT_STREQ(aryTarget, "###");
    CStringConverter::convertToMBCS(CString(), aryTarget, 4);
    EXPECT_EQ(std::string(aryTarget, 4), std::string(4, '\0'));
    CString strResult(L"before");
    CStringConverter::convertFromMBCS(nullptr, strResult);
    EXPECT_TRUE(strResult.isEmpty());
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    CStringConverter::convertFromMBCS("", strResult);
    EXPECT_EQ(textOf(strResult), L"");
}

TEST(CStringConverter, MbcsKeepsWhatStandsBeforeTheFirstMalformedPart) {
    CString strResult;
    CStringConverter::convertFromMBCS("a\xE4\xBD\xA0"
                                      "b\xFF"
                                      "cd",
                                      strResult);
    EXPECT_EQ(textOf(strResult), L"a\x4F60\x62");
    CStringConverter::convertFromMBCS("a\xE4\xBD", strResult);
    EXPECT_EQ(textOf(strResult), L"a");
    CStringConverter::convertFromMBCS("\xFF", strResult);
    EXPECT_EQ(textOf(strResult), L"");
    char aryTarget[8];
    std::memset(aryTarget, '#', sizeof(aryTarget));
    const wchar_t aryNoCharacter[] = {L'a', -1, L'b', 0};
    CStringConverter::convertToMBCS(aryNoCharacter, aryTarget, 8);
    EXPECT_EQ(std::string(aryTarget, 8), std::string("a\0\0\0\0\0\0", 8));
}

TEST(CStringConverter, FormatsWideTextsForPercentS) {
    EXPECT_EQ(textOf(CStringConverter::format(L"%s and %s: %d%%", L"one", L"t\x4F60wo", 3)), L"one and t\x4F60wo: 3%");
    EXPECT_EQ(textOf(CStringConverter::format(L"%ls|%hs", L"w", "n")), L"w|n");
    EXPECT_EQ(textOf(CStringConverter::format(L"%%s")), L"%ls") << "there is no escape";
    EXPECT_EQ(textOf(CStringConverter::format(L"%4s|%-3s|", "ab", "c")), L"  ab|c  |")
        << "only the two characters together are rewritten";
    EXPECT_EQ(textOf(CStringConverter::format(L"%s|%4s", L"\x4F60", "ab")), L"\x4F60|  ab");
    EXPECT_EQ(textOf(CStringConverter::format(L"plain")), L"plain");
    EXPECT_EQ(textOf(CStringConverter::format(L"%")), L"") << "what cannot be formatted is blank";
    EXPECT_EQ(textOf(CStringConverter::format(L"")), L"");
    EXPECT_EQ(textOf(CStringConverter::format(nullptr)), L"");
}

TEST(CStringConverter, FormatsLongFormatsAndLongTexts) {
    for (const unsigned int uiLength :
         {10u, 250u, 252u, 253u, 254u, 255u, 256u, 257u, 1021u, 1022u, 1023u, 1024u, 1025u, 5000u, 524285u}) {
        const std::wstring strFill(uiLength, L'x');
        EXPECT_EQ(textOf(CStringConverter::format((strFill + L"%s").c_str(), L"yz")), strFill + L"yz") << uiLength;
        EXPECT_EQ(textOf(CStringConverter::format(L"%s", strFill.c_str())), strFill) << uiLength;
    }
    std::wstring strEscaped;
    for (int i = 0; i < 85; ++i)
        strEscaped += L"%%s";
    EXPECT_EQ(textOf(CStringConverter::format(strEscaped.c_str())).size(), 85u * 3);
    EXPECT_EQ(textOf(CStringConverter::format(L"%s", std::wstring(524288, L'x').c_str())), L"") << "too long";
}

template <std::size_t... I> CString formatWithTexts(const wchar_t* pFormat, std::index_sequence<I...>) {
    return CStringConverter::format(pFormat, (static_cast<void>(I), L"x")...);
}

TEST(CStringConverter, FormatOfNothingButTextsGrowsTheMost) {
    for (const unsigned int uiTexts : {127u, 128u, 129u, 140u}) {
        std::wstring strFormat;
        for (unsigned int i = 0; i < uiTexts; ++i)
            strFormat += L"%s";
        EXPECT_EQ(textOf(formatWithTexts(strFormat.c_str(), std::make_index_sequence<140>())),
                  std::wstring(uiTexts, L'x'));
    }
}

TEST(CStringConverter, MeasuresUpToTheLastDoubling) {
    EXPECT_EQ(measure(L""), 0);
    EXPECT_EQ(measure(L"%d-%ls", 12, L"abc"), 6);
    EXPECT_EQ(measure(L"%*d", 1023, 1), 1023);
    EXPECT_EQ(measure(L"%*d", 1024, 1), 1024);
    EXPECT_EQ(measure(L"%*d", 524287, 1), 524287);
    EXPECT_EQ(measure(L"%*d", 524288, 1), -1);
    EXPECT_EQ(measure(nullptr), -1);
}

TEST(CStringConverter, PrintsWideTextToStandardOutput) {
    const OrlixTest::tagChildResult result = OrlixTest::runInChild([] {
        std::setlocale(LC_ALL, "C.UTF-8");
        CStringConverter::printf(nullptr);
        CStringConverter::printf(L"<%s|%d>", L"\x4F60", 7);
        CStringConverter::printf(L"%%s%%");
        return 3;
    });
    EXPECT_EQ(result.strOutput, "<\xE4\xBD\xA0|7>%ls%");
    EXPECT_EQ(result.iExitCode, 3);
}

TEST(CStringConverter, EncodesAndDecodesWithATable) {
    EXPECT_EQ(encode(CString(L"a<b & \"c\">")), L"a&lt;b &amp; &quot;c&quot;&gt;");
    EXPECT_EQ(decode(CString(L"a&lt;b &amp; &quot;c&quot;&gt;")), L"a<b & \"c\">");
    EXPECT_EQ(decode(CString(L"&amp;lt;")), L"&lt;") << "what a code became is not looked at again";
    EXPECT_EQ(decode(CString(L"&am&lt")), L"&am&lt") << "a code that does not fit in the rest stays";
    EXPECT_EQ(encode(CString(L"\x4F60<")), L"\x4F60&lt;");
}

TEST(CStringConverter, EncodingNothingIsBlankAndDecodingNothingIsNull) {
    EXPECT_EQ(encode(CString(L"")), L"");
    EXPECT_EQ(encode(CString()), L"");
    EXPECT_EQ(decode(CString(L"")), L"<null>");
    EXPECT_EQ(decode(CString()), L"<null>");
}

TEST(CStringConverter, TheFirstEntryOfTheTableCounts) {
    const wchar_t aryChars[] = {L'x', L'x', L'\x4F60'};
    const wchar_t* aryCodes[] = {L"ab?", L"abc", L"\x597D"};
    const unsigned int aryLengths[] = {2, 3, 1};
    CString strResult;
    CStringConverter::encodeChars(L"xy\x4F60", 3, 3, aryChars, aryCodes, aryLengths, strResult);
    EXPECT_EQ(textOf(strResult), L"aby\x597D") << "the length of a code counts, not its terminator";
    CStringConverter::decodeChars(L"abc\x597D", 4, 3, aryChars, aryCodes, aryLengths, strResult);
    EXPECT_EQ(textOf(strResult), L"xc\x4F60");
    CStringConverter::decodeChars(L"abc", 1, 3, aryChars, aryCodes, aryLengths, strResult);
    EXPECT_EQ(textOf(strResult), L"a") << "the length limits, not the terminator";
    CString strSelf(L"xyx");
    CStringConverter::encodeChars(strSelf, 3, aryChars, aryCodes, aryLengths, strSelf);
    EXPECT_EQ(textOf(strSelf), L"abyab") << "the result may be the source";
}

TEST(CStringConverter, CodesOfLengthZeroVanishOnceAndNeverMatch) {
    const wchar_t aryChars[] = {L'-', L'+'};
    const wchar_t* aryCodes[] = {L"", L"plus"};
    const unsigned int aryLengths[] = {0, 4};
    CString strResult;
    CStringConverter::encodeChars(L"a-b+", 4, 2, aryChars, aryCodes, aryLengths, strResult);
    EXPECT_EQ(textOf(strResult), L"abplus");
    CStringConverter::decodeChars(strResult, 2, aryChars, aryCodes, aryLengths, strResult);
    EXPECT_EQ(textOf(strResult), L"ab+");
}

TEST(CStringConverter, RandomTextsSurviveEncodingAndDecoding) {
    std::mt19937 random(13);
    for (int i = 0; i < 5000; ++i) {
        std::wstring strText;
        for (unsigned int k = random() % 40 + 1; k != 0; --k)
            strText += L"ab<>&\";lt\x4F60"[random() % 10];
        std::wstring strExpected;
        for (const wchar_t ch : strText) {
            const wchar_t* const pFound = std::wmemchr(ESCAPED, ch, 4);
            strExpected += pFound ? std::wstring(s_aryCodes[pFound - ESCAPED]) : std::wstring(1, ch);
        }
        ASSERT_EQ(encode(CString(strText.c_str())), strExpected);
        ASSERT_EQ(decode(CString(strExpected.c_str())), strText);
    }
}

TEST(CStringConverter, FlagsDecideOnlyAboutTheOuterEdges) {
    const struct {
        const wchar_t* pText;
        bool bStart, bEnd;
        Texts aryTokens;
    } aryRow[] = {{nullptr, true, true, {}},
                  {L"", true, true, {}},
                  {L",", true, true, {L"", L""}},
                  {L",", false, false, {}},
                  {L",", true, false, {L""}},
                  {L",", false, true, {L""}},
                  {L"abc", true, true, {L"abc"}},
                  {L"abc", false, false, {L"abc"}},
                  {L"a,,b", false, false, {L"a", L"", L"b"}},
                  {L"a,,b", true, true, {L"a", L"", L"b"}},
                  {L",a,", true, true, {L"", L"a", L""}},
                  {L",a,", false, false, {L"a"}},
                  {L",,", false, false, {L""}},
                  {L",,", true, true, {L"", L"", L""}},
                  {L"a,", false, false, {L"a"}},
                  {L"a,b", false, false, {L"a", L"b"}}};
    for (const auto& row : aryRow)
        EXPECT_EQ(separate(row.pText, row.bStart, row.bEnd), row.aryTokens)
            << testing::PrintToString(std::wstring(row.pText ? row.pText : L"null")) << row.bStart << row.bEnd;
}

TEST(CStringConverter, NumericTokensMayBeHexadecimalAndEmptyOnesAreZero) {
    using Numbers = std::vector<unsigned int>;
    EXPECT_EQ(separateNumbers(L"1,0x1G2,,x,-5,0x,07", false, false), (Numbers{1, 18, 0, 0, 0, 0, 7}));
    EXPECT_EQ(separateNumbers(L",1,", true, true), (Numbers{0, 1, 0}));
    EXPECT_EQ(separateNumbers(L",1,", false, false), (Numbers{1}));
    EXPECT_EQ(separateNumbers(L"0,x1,00x1,0", false, false), (Numbers{0, 0, 0, 0})) << "a token ends at the separator";
    EXPECT_EQ(separateNumbers(nullptr, true, true), Numbers());
}

TEST(CStringConverter, NumericTokenEndsAtAZeroWithinIt) {
    CString strText(L"0x1");
    strText.append(L"", 1); // believed: the length covers a zero
    strText.append(L"2,12");
    strText.append(L"", 1);
    strText.append(L"3");
    CDataArray<unsigned int> aryTarget;
    CStringConverter::separateString(strText, L',', aryTarget, false, false);
    ASSERT_EQ(aryTarget.getSize(), 2u);
    EXPECT_EQ(aryTarget[0], 1u);
    EXPECT_EQ(aryTarget[1], 12u);
}

TEST(CStringConverter, SeparatingAppendsAlsoToTheArrayItComesFrom) {
    CDataArray<CString> aryTarget;
    aryTarget.add(CString(L"a,b,c,d,e,f,g,h,i,j"));
    CStringConverter::separateString(aryTarget[0], L',', aryTarget, false, false);
    EXPECT_EQ(textsOf(aryTarget),
              (Texts{L"a,b,c,d,e,f,g,h,i,j", L"a", L"b", L"c", L"d", L"e", L"f", L"g", L"h", L"i", L"j"}));
}

TEST(CStringConverter, RandomTextsSeparateAsTheReferenceAndMergeBack) {
    std::mt19937 random(17);
    for (int i = 0; i < 10000; ++i) {
        std::wstring strText;
        for (unsigned int k = random() % 12; k != 0; --k)
            strText += L"ab,,"[random() % 4];
        const bool bStart = random() % 2, bEnd = random() % 2;
        ASSERT_EQ(separate(strText.c_str(), bStart, bEnd), referenceSeparate(strText, bStart, bEnd));
        CDataArray<CString> aryTokens;
        CString strBack;
        CStringConverter::separateString(CString(strText.c_str()), L',', aryTokens, true, true);
        CStringConverter::mergeString(aryTokens, L',', strBack);
        ASSERT_EQ(textOf(strBack), strText);
    }
}

TEST(CStringConverter, SplitsByEachSeparatorInTurn) {
    const CString strText(L"a,b;,c;d");
    EXPECT_EQ(splitBy(strText, L"", true, true), (Texts{L"first"}));
    EXPECT_EQ(splitBy(strText, L",", true, true), (Texts{L"first", L"a", L"b;", L"c;d"}));
    EXPECT_EQ(splitBy(strText, L",;", true, true), (Texts{L"first", L"a", L"b", L"", L"c", L"d"}));
    EXPECT_EQ(splitBy(strText, L",;", false, false), (Texts{L"first", L"a", L"b", L"c", L"d"}));
    EXPECT_EQ(splitBy(strText, L";,", true, false), (Texts{L"first", L"a", L"b", L"", L"c", L"d"}));
    EXPECT_EQ(splitBy(CString(L"a,,b"), L",;", true, true), (Texts{L"first", L"a", L"b"}))
        << "an empty piece has nothing to cut";
    EXPECT_EQ(splitBy(CString(L"a;,,b"), L";,-", false, false), (Texts{L"first", L"a", L"b"}));
    EXPECT_EQ(splitBy(CString(), L",;", true, true), (Texts{L"first"}));
}

TEST(CStringConverter, MergesWithSeparatorsBetween) {
    CDataArray<CString> aryTexts;
    CDataList<CString> listTexts;
    CDataArray<unsigned int> aryNumbers;
    CString strResult(L"before");
    CStringConverter::mergeString(aryTexts, L'/', strResult);
    EXPECT_EQ(textOf(strResult), L"");
    strResult.free();
    CStringConverter::mergeString(listTexts, L'/', strResult);
    EXPECT_EQ(textOf(strResult), L"");
    strResult.free();
    CStringConverter::mergeString(aryNumbers, L'/', strResult);
    EXPECT_EQ(textOf(strResult), L"");
    for (const wchar_t* pText : {L"", L"ab", static_cast<const wchar_t*>(nullptr), L"c"}) {
        aryTexts.add(CString(pText));
        listTexts.add(CString(pText));
    }
    for (const unsigned int uiNumber : {0u, 10u, UINT_MAX})
        aryNumbers.add(uiNumber);
    CStringConverter::mergeString(aryTexts, L'/', strResult);
    EXPECT_EQ(textOf(strResult), L"/ab//c");
    strResult.free();
    CStringConverter::mergeString(listTexts, L'/', strResult);
    EXPECT_EQ(textOf(strResult), L"/ab//c");
    CStringConverter::mergeString(aryNumbers, L'/', strResult);
    EXPECT_EQ(textOf(strResult), L"0/10/4294967295");
    CStringConverter::mergeString(aryTexts, L'-', aryTexts[1]);
    EXPECT_EQ(textOf(aryTexts[1]), L"-ab--c") << "the result may be an element";
}

TEST(CStringConverter, MergingAListLeavesItsWalkAlone) {
    CDataList<CString> listTexts;
    listTexts.add(CString(L"a"));
    listTexts.add(CString(L"b"));
    listTexts.toHead();
    listTexts.next();
    CString strResult;
    CStringConverter::mergeString(listTexts, L',', strResult);
    EXPECT_EQ(textOf(*listTexts.next()), L"b");
}

TEST(CStringConverter, EachBufferGoesBackToTheHeap) {
    const std::wstring strFill(3000, L'x');
    const std::string strBytes(3000, 'x');
    const auto convertOften = [&] {
        measure(L"%ls", strFill.c_str());
        CString strResult = CStringConverter::format(L"%s", strFill.c_str());
        strResult = CStringConverter::format((strFill + L"%s").c_str(), strFill.c_str());
        CStringConverter::convertFromUTF8(narrow(strBytes), strResult);
        CStringConverter::convertFromUTF16(narrow(strBytes), 3000, strResult);
        CStringConverter::convertFromMBCS(strBytes.c_str(), strResult);
        CStringConverter::encodeChars(strResult, 4, ESCAPED, s_aryCodes, CODE_LENGTHS, strResult);
        CStringConverter::decodeChars(strResult, 4, ESCAPED, s_aryCodes, CODE_LENGTHS, strResult);
        splitBy(strResult, L",;", true, true);
        CDataArray<CString> aryTexts;
        CStringConverter::separateString(strResult, L',', aryTexts, true, true);
        CStringConverter::mergeString(aryTexts, L',', strResult);
    };
    EXPECT_EQ(OrlixTest::getLeftOnHeap(convertOften), 0u);
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN)
TEST(CStringConverter, WithoutMemoryAFormatIsBlankAndOtherResultsStay) {
    const OrlixTest::tagChildResult result = OrlixTest::runInChild([] {
        const std::string strBytes(1000000, 'x');
        const std::wstring strText(1000000, L'x');
        CString strUtf8(L"a"), strUtf16(L"b"), strMbcs(L"c"), strEncoded(L"d"), strDecoded(L"e");
        if (!OrlixTest::limitMemory(1 << 20))
            return 125;
        // What the heap still has free is taken as well, down to pieces too small for any result here.
        for (const void* volatile pTaken = strText.c_str(); pTaken != nullptr;)
            pTaken = std::malloc(1 << 20);
        const int iCount = measure(L"%*d", 500000, 1);
        const CString strFormatted = CStringConverter::format(L"%*d", 500000, 1);
        CStringConverter::convertFromUTF8(narrow(strBytes), strUtf8);
        CStringConverter::convertFromUTF16(narrow(strBytes), 1000000, strUtf16);
        CStringConverter::convertFromMBCS(strBytes.c_str(), strMbcs);
        CStringConverter::encodeChars(strText.c_str(), 1000000, 4, ESCAPED, s_aryCodes, CODE_LENGTHS, strEncoded);
        CStringConverter::decodeChars(strText.c_str(), 1000000, 4, ESCAPED, s_aryCodes, CODE_LENGTHS, strDecoded);
        OrlixTest::unlimitMemory();
        const bool bBlank = !strFormatted.isEmpty() && strFormatted.length() == 0;
        std::printf("%d %d %ls%ls%ls%ls%ls", iCount, bBlank, strUtf8.getBuffer(), strUtf16.getBuffer(),
                    strMbcs.getBuffer(), strEncoded.getBuffer(), strDecoded.getBuffer());
        return 0;
    });
    EXPECT_EQ(result.strOutput, "-1 1 abcde");
    EXPECT_EQ(result.iExitCode, 0);
}
#endif
