#pragma once

#include <Orlix/foundation/CString.h>

namespace Orlix {

/** @return the text of a string for a format that wants one: empty for a string without text. Valid until the string
 *  changes. */
inline const wchar_t* textOf(const CString& strText) noexcept {
    const wchar_t* const pText = strText.getBuffer();
    return pText ? pText : L"";
}
} // namespace Orlix
