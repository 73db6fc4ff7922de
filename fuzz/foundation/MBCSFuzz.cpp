// Any bytes as multibyte text: what is read stops at the first malformed byte and goes out again as the bytes it came
// from, cut to any size.
#include <Orlix/foundation/CStringConverter.h>

#include "support/FuzzText.h"

using namespace OrlixFuzz;
using Orlix::CString;
using Orlix::CStringConverter;

namespace {

std::wstring decode(const std::string& strBytes) {
    const auto pBytes = copyExactly(strBytes.c_str(), strBytes.size() + 1);
    CString strResult;
    CStringConverter::convertFromMBCS(pBytes.get(), strResult);
    FUZZ_CHECK(!strResult.isEmpty() && strResult.length() <= strBytes.size());
    return textOf(strResult);
}

/** The target's bytes up to the first zero; nothing but zeros may follow. */
std::string encode(const std::wstring& strText, unsigned int uiSize) {
    const auto pText = copyExactly(strText.c_str(), strText.size() + 1);
    std::string strTarget(uiSize, '#');
    const std::unique_ptr<char[]> pTarget = copyExactly(strTarget.data(), uiSize);
    CStringConverter::convertToMBCS(pText.get(), pTarget.get(), uiSize);
    strTarget.assign(pTarget.get(), uiSize);
    const std::size_t uiLength = strTarget.find('\0');
    FUZZ_CHECK(uiLength != std::string::npos);
    FUZZ_CHECK(strTarget.find_first_not_of('\0', uiLength) == std::string::npos);
    return strTarget.substr(0, uiLength);
}

template <class T> bool isPrefix(const T& strPrefix, const T& strWhole) {
    return strWhole.compare(0, strPrefix.size(), strPrefix) == 0;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    if (uiSize == 0)
        return 0;
    const std::string strBytes = toTerminated(pData + 1, uiSize - 1);
    const std::wstring strText = decode(strBytes);
    const std::string strAll = encode(strText, static_cast<unsigned int>(strBytes.size() + 1));
    FUZZ_CHECK(isPrefix(strAll, strBytes));
    FUZZ_CHECK(isPrefix(decode(strAll), strText));

    // The first byte of the input cuts the target.
    const std::string strCut = encode(strText, pData[0] + 1u);
    FUZZ_CHECK(isPrefix(strCut, strAll));
    FUZZ_CHECK(isPrefix(decode(strCut), strText));
    return 0;
}
