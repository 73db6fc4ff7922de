#pragma once

#include <Orlix/foundation/CString.h>

/** @return the text of a string as printf takes it: empty for a string without text. Valid until the string changes. */
inline const wchar_t* textOf(const Orlix::CString& strText) { return strText.getBuffer() ? strText.getBuffer() : L""; }
