// Any bytes as UTF-8: the whole must read as its forms do one by one, which takes the plain path where the whole takes
// the one for blocks, and what was read must survive the way out and back, cut to any size.
#include <Orlix/foundation/CStringConverter.h>

#include "support/FuzzText.h"

#include <algorithm>

using namespace OrlixFuzz;
using Orlix::CString;
using Orlix::CStringConverter;

namespace {

std::wstring decode(const std::string& strBytes) {
    const auto pBytes = copyExactly(strBytes.c_str(), strBytes.size() + 1);
    CString strResult;
    CStringConverter::convertFromUTF8(reinterpret_cast<const unsigned char*>(pBytes.get()), strResult);
    FUZZ_CHECK(!strResult.isEmpty());
    return textOf(strResult);
}

std::string encode(const std::wstring& strText, unsigned int uiSize) {
    const auto pText = copyExactly(strText.c_str(), strText.size() + 1);
    const std::unique_ptr<unsigned char[]> pTarget(new unsigned char[uiSize]);
    unsigned int uiWritten = 0;
    CStringConverter::convertToUTF8(pText.get(), pTarget.get(), uiSize, &uiWritten);
    FUZZ_CHECK(uiWritten < uiSize && pTarget[uiWritten] == 0);
    return std::string(reinterpret_cast<const char*>(pTarget.get()), uiWritten);
}

std::size_t getFormLength(char ch) {
    const unsigned int uiLead = static_cast<unsigned char>(ch);
    return uiLead >= 224 ? 3 : uiLead >= 192 ? 2 : 1;
}

std::wstring decodeFormByForm(const std::string& strBytes) {
    std::wstring strText;
    std::size_t uiForm;
    // A form that the end cuts short gives nothing.
    for (std::size_t i = 0; i < strBytes.size() && i + (uiForm = getFormLength(strBytes[i])) <= strBytes.size();
         i += uiForm)
        strText += decode(strBytes.substr(i, uiForm));
    return strText;
}

std::string encodeOneByOne(const std::wstring& strText) {
    std::string strBytes;
    for (const wchar_t ch : strText)
        strBytes += encode(std::wstring(1, ch), 4);
    return strBytes;
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t uiSize) {
    if (uiSize == 0)
        return 0;
    const std::string strBytes = toTerminated(pData + 1, uiSize - 1);
    const std::wstring strText = decode(strBytes);
    FUZZ_CHECK(strText == decodeFormByForm(strBytes));
    FUZZ_CHECK(std::all_of(strText.begin(), strText.end(), [](wchar_t ch) { return ch >= 0 && ch <= 0xFFFF; }));

    // An overlong form may have given a zero, which ends the text on its way out.
    const std::wstring strSent = strText.c_str();
    const std::string strAll = encode(strSent, static_cast<unsigned int>(strSent.size() * 3 + 1));
    FUZZ_CHECK(strAll == encodeOneByOne(strSent));
    FUZZ_CHECK(decode(strAll) == strSent);

    // The first byte of the input cuts the target: whole characters only, and as many as fit.
    const std::string strCut = encode(strSent, pData[0] + 1u);
    FUZZ_CHECK(strAll.compare(0, strCut.size(), strCut) == 0);
    const bool bAll = strCut.size() == strAll.size();
    FUZZ_CHECK(bAll || strCut.size() + getFormLength(strAll[strCut.size()]) > pData[0]);
    FUZZ_CHECK(bAll || (strAll[strCut.size()] & 0xC0) != 0x80);
    return 0;
}
