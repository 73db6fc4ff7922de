#pragma once

#include <cstddef>

namespace Orlix {

/** Finds a pattern in a time that grows with the text and the pattern, never with their product, and without memory:
 *  for the texts on which searches that start anew at each place are slow.
 *  M. Crochemore, D. Perrin, "Two-way string-matching", Journal of the ACM 38(3), 1991. */
class CTwoWaySearch {
public:
    /** @param uiPatternLength 1 up to uiLength. @return the first index, -1 if there is none. */
    static int find(const wchar_t* pText, std::size_t uiLength, const wchar_t* pPattern,
                    std::size_t uiPatternLength) noexcept;
};
} // namespace Orlix
