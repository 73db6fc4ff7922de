#pragma once

#include <Orlix/foundation/CString.h>

#include <cstdint>

namespace Orlix {

// The orders of the maps and sets. Each compares two keys and gives a negative number, 0 or a positive number.

/** By numeric value. A NaN is no key: it equals nothing. */
template <class T> struct ORLIX_API tagNumCompare {
    // In this form a search takes its way down without a jump that could be guessed wrong.
    int operator()(const T& first, const T& second) const noexcept {
        return first == second ? 0 : first > second ? 1 : -1;
    }
};

/** By code points, from the first character on. */
struct ORLIX_API tagStringCompare {
    int operator()(const CString& strFirst, const CString& strSecond) const noexcept {
        return strFirst.compare(strSecond);
    }
};

/** As tagStringCompare without the case of the ASCII letters. */
struct ORLIX_API tagStringCompareIC {
    int operator()(const CString& strFirst, const CString& strSecond) const noexcept {
        return strFirst.compareIC(strSecond);
    }
};

/** By code points, from the last character backwards: quick to tell apart what begins alike. */
struct ORLIX_API tagStringReverseCompare {
    int operator()(const CString& strFirst, const CString& strSecond) const noexcept {
        return strFirst.compareReverse(strSecond);
    }
};

/** As tagStringReverseCompare without the case of the ASCII letters. */
struct ORLIX_API tagStringReverseCompareIC {
    int operator()(const CString& strFirst, const CString& strSecond) const noexcept {
        return strFirst.compareReverseIC(strSecond);
    }
};

/** By address and on purpose not by text: equal texts in two places are two keys. */
struct ORLIX_API tagCharPtrCompare {
    int operator()(const char* pFirst, const char* pSecond) const noexcept {
        return tagNumCompare<std::uintptr_t>()(reinterpret_cast<std::uintptr_t>(pFirst),
                                               reinterpret_cast<std::uintptr_t>(pSecond));
    }
};
} // namespace Orlix
