#pragma once

#include <Orlix/memory/CMemory.h>

#include <climits>
#include <cstddef>

namespace Orlix {

/** A block for a text and its terminator, to be handed to CString::attach. @return null without memory and for a size
 *  beyond 32 bits. */
inline wchar_t* allocText(std::size_t uiLength) {
    if (uiLength >= UINT_MAX / sizeof(wchar_t))
        return nullptr;
    return static_cast<wchar_t*>(CMemory::malloc(static_cast<unsigned int>((uiLength + 1) * sizeof(wchar_t)), 0));
}
} // namespace Orlix
