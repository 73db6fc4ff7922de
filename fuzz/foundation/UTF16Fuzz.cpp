// Any bytes as UTF-16: one character per unit whatever the unit, and the same bytes again on the way out.
#include <Orlix/foundation/CStringConverter.h>

#include "support/FuzzText.h"

using namespace OrlixFuzz;
using Orlix::CString;
using Orlix::CStringConverter;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    const auto pSource = copyExactly(pData, uiSize);
    CString strResult(L"before");
    CStringConverter::convertFromUTF16(pSource.get(), static_cast<unsigned int>(uiSize), strResult);
    const std::wstring strText = textOf(strResult);
    if (uiSize == 0) {
        FUZZ_CHECK(strText == L"before");
        return 0;
    }
    FUZZ_CHECK(!strResult.isEmpty() && strText.size() == uiSize / 2);
    for (std::size_t i = 0; i < strText.size(); ++i) {
        std::uint16_t uiUnit;
        std::memcpy(&uiUnit, pData + i * 2, sizeof(uiUnit));
        FUZZ_CHECK(static_cast<std::uint32_t>(strText[i]) == uiUnit);
    }

    // A zero unit ends the text on its way out, and zeros follow it.
    const std::size_t uiSent = strText.substr(0, strText.find(L'\0')).size() * 2;
    const std::unique_ptr<unsigned char[]> pTarget(new unsigned char[uiSize]);
    std::memset(pTarget.get(), 0xEE, uiSize);
    CStringConverter::convertToUTF16(strResult, pTarget.get(), static_cast<unsigned int>(uiSize));
    FUZZ_CHECK(std::memcmp(pTarget.get(), pData, uiSent) == 0);
    for (std::size_t i = uiSent; i < uiSize; ++i)
        FUZZ_CHECK(pTarget[i] == 0);
    return 0;
}
