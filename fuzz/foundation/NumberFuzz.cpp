// Any text as a number: the wide and the narrow readers agree with each other and with what the digits say, and what
// was read comes back from its own text.
#include <Orlix/foundation/CDataArray.h>
#include <Orlix/foundation/CStringConverter.h>

#include "support/FuzzText.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <limits>

using namespace OrlixFuzz;
using Orlix::CDataArray;
using Orlix::CString;
using Orlix::CStringConverter;

namespace {

/** The text in both forms, each with its terminator as the last element. */
struct tagTexts {
    explicit tagTexts(const std::string& strBytes)
        : pNarrow(copyExactly(reinterpret_cast<const unsigned char*>(strBytes.c_str()), strBytes.size() + 1)),
          pWide(copyExactly(widen(strBytes).c_str(), strBytes.size() + 1)) {}

    std::unique_ptr<unsigned char[]> pNarrow;
    std::unique_ptr<wchar_t[]> pWide;
};

constexpr char DIGITS[] = "0123456789";

/** The value of the leading digits, modulo 2 to the power of 64. */
unsigned long sumDigits(const std::string& strText) {
    unsigned long ulValue = 0;
    for (const char ch : strText.substr(0, strText.find_first_not_of(DIGITS)))
        ulValue = ulValue * 10 + static_cast<unsigned long>(ch - '0');
    return ulValue;
}

/** The value of all hexadecimal digits, wherever they stand. */
unsigned int sumHexadecimal(const std::string& strText) {
    unsigned int uiValue = 0;
    for (const char ch : strText)
        if (std::isxdigit(static_cast<unsigned char>(ch)))
            uiValue = uiValue * 16 + static_cast<unsigned int>(std::stoi(std::string(1, ch), nullptr, 16));
    return uiValue;
}

template <class T> T readBack(T value) {
    wchar_t aryText[32] = {};
    CStringConverter::toString(value, aryText);
    return static_cast<T>(CStringConverter::toLLong(aryText));
}

void checkIntegers(const std::string& strBytes, const tagTexts& texts) {
    const bool bMinus = strBytes[0] == '-';
    const unsigned long ulDigits = sumDigits(bMinus ? strBytes.substr(1) : strBytes);
    const long lValue = static_cast<long>(bMinus ? 0 - ulDigits : ulDigits);
    FUZZ_CHECK(CStringConverter::toLLong(texts.pNarrow.get()) == lValue);
    FUZZ_CHECK(CStringConverter::toLLong(texts.pWide.get()) == lValue);
    FUZZ_CHECK(CStringConverter::toInt(texts.pNarrow.get()) == static_cast<int>(lValue));
    FUZZ_CHECK(CStringConverter::toInt(texts.pWide.get()) == static_cast<int>(lValue));
    FUZZ_CHECK(readBack(lValue) == lValue);
    FUZZ_CHECK(readBack(static_cast<int>(lValue)) == static_cast<int>(lValue));

    const bool bHexadecimal = strBytes[0] == '0' && (strBytes[1] == 'x' || strBytes[1] == 'X');
    const unsigned int uiValue =
        bHexadecimal ? sumHexadecimal(strBytes.substr(2)) : static_cast<unsigned int>(sumDigits(strBytes));
    FUZZ_CHECK(CStringConverter::toUInt(texts.pNarrow.get()) == uiValue);
    FUZZ_CHECK(CStringConverter::toUInt(texts.pWide.get()) == uiValue);
    FUZZ_CHECK(readBack(uiValue) == uiValue);
}

void checkFloat(const std::string& strBytes, const tagTexts& texts) {
    const float fValue = CStringConverter::toFloat(texts.pNarrow.get());
    const float fWide = CStringConverter::toFloat(texts.pWide.get());
    FUZZ_CHECK(std::memcmp(&fValue, &fWide, sizeof(fValue)) == 0);
    FUZZ_CHECK(!std::isnan(fValue) && std::signbit(fValue) == (strBytes[0] == '-'));
    // What strtof would take for more than a plain number is cut off first.
    const std::size_t uiSign = strBytes[0] == '-' ? 1 : 0;
    std::size_t uiEnd = std::min(strBytes.find_first_not_of(DIGITS, uiSign), strBytes.size());
    if (uiEnd < strBytes.size() && strBytes[uiEnd] == '.')
        uiEnd = std::min(strBytes.find_first_not_of(DIGITS, uiEnd + 1), strBytes.size());
    const double dExact = std::strtod(strBytes.substr(0, uiEnd).c_str(), nullptr);
    if (std::fabs(dExact) < std::numeric_limits<float>::max() / 2)
        FUZZ_CHECK(std::fabs(static_cast<double>(fValue) - dExact) <= 1e-6 * (1 + std::fabs(dExact)));
}

void checkTokens(const CString& strText) {
    CDataArray<CString> aryTexts;
    CDataArray<unsigned int> aryNumbers;
    CStringConverter::separateString(strText, L',', aryTexts, true, true);
    CStringConverter::separateString(strText, L',', aryNumbers, true, true);
    FUZZ_CHECK(aryTexts.getSize() == aryNumbers.getSize());
    for (unsigned int i = 0; i < aryTexts.getSize(); ++i)
        FUZZ_CHECK(aryTexts[i].toUInt() == aryNumbers[i]);
    CString strMerged;
    CStringConverter::mergeString(aryTexts, L',', strMerged);
    FUZZ_CHECK(textOf(strMerged) == textOf(strText));
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    const std::string strBytes = toTerminated(pData, uiSize);
    const tagTexts texts(strBytes);
    checkIntegers(strBytes, texts);
    checkFloat(strBytes, texts);
    FUZZ_CHECK(CStringConverter::toBool(texts.pNarrow.get()) == (strBytes == "true"));
    FUZZ_CHECK(CStringConverter::toBool(texts.pWide.get()) == (strBytes == "true"));
    checkTokens(CString(texts.pWide.get()));
    return 0;
}
