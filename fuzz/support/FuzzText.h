#pragma once

#include <Orlix/foundation/CString.h>

#include "support/FuzzCheck.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace OrlixFuzz {

/** A copy on the system heap that ends where the data ends, so that the sanitizer sees a read behind it. */
template <class T> std::unique_ptr<T[]> copyExactly(const T* pData, std::size_t uiCount) {
    std::unique_ptr<T[]> pCopy(new T[uiCount]);
    if (uiCount != 0)
        std::memcpy(pCopy.get(), pData, uiCount * sizeof(T));
    return pCopy;
}

/** The bytes up to the first zero as a terminated text. */
inline std::string toTerminated(const std::uint8_t* pData, std::size_t uiSize) {
    const std::string strBytes(reinterpret_cast<const char*>(pData), uiSize);
    return strBytes.substr(0, strBytes.find('\0'));
}

/** One character for each byte, so that the input decides about the whole text cheaply. */
inline std::wstring widen(const std::string& strBytes) {
    std::wstring strText;
    for (const char ch : strBytes)
        strText += static_cast<wchar_t>(static_cast<unsigned char>(ch));
    return strText;
}

/** The whole text of a string, zeros included; a string that is not null must be terminated at its length. */
inline std::wstring textOf(const Orlix::CString& strText) {
    if (strText.isEmpty())
        return std::wstring();
    FUZZ_CHECK(strText.getBuffer()[strText.length()] == L'\0');
    return std::wstring(strText.getBuffer(), strText.length());
}
} // namespace OrlixFuzz
