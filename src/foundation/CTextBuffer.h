#pragma once

#include <Orlix/memory/CMemory.h>

#include <climits>
#include <cstddef>
#include <cstring>

namespace Orlix {

/** The blocks behind wide texts. */
class CTextBuffer {
public:
    /** Takes a block for a text and its terminator, which the caller writes.
     *  @return null without memory and for a size beyond 32 bits. */
    static wchar_t* alloc(std::size_t uiLength) {
        if (uiLength >= UINT_MAX / sizeof(wchar_t))
            return nullptr;
        return static_cast<wchar_t*>(CMemory::malloc(static_cast<unsigned int>((uiLength + 1) * sizeof(wchar_t)), 0));
    }

    /** Copies characters without a terminator; none from or to a null pointer. @return behind the last one. */
    static wchar_t* put(wchar_t* pTarget, const wchar_t* pText, std::size_t uiLength) noexcept {
        if (uiLength != 0)
            std::memcpy(pTarget, pText, uiLength * sizeof(wchar_t));
        return pTarget + uiLength;
    }
};
} // namespace Orlix
